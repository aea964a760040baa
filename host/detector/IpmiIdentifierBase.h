// Ipmi::IdentifierBase, what identifiers that read IPMI FRU data have in common.
#pragma once

#include "host/detector/IdentifierBase.h"
#include "host/ipmi/IdpromContents.h"

namespace Ipmi {

/// An identifier with the buffers and records of FRU data.
class KEX_API IdentifierBase : public PowerSupplyDetector::IdentifierBase {
 public:
  using BufPtr = Kex::Ptr<Hal::Buf>;

  /// Length of a product info area's header that is read first, in bytes.
  static constexpr Kex::U8 kProductInfoHeaderLength = ProductInfoArea::kHeaderLength;

  static Kex::KexType& _fwkType();

  /// As the base's constructor.
  IdentifierBase(Kex::Ptr<Kex::Clock const> const& clock, SlotConfigPtr const& config,
                 SlotStatusPtr const& status, RequestPtr const& pollForInsertionRequest,
                 RequestPtr const& identifySupplyRequest, RequestPtr const& checkSupplyRequest,
                 Kex::Ptr<Fru::IntCtrl> const& presentIntCtrl,
                 Kex::Ptr<Kex::FileDescriptor const> const& presentIntFd,
                 Kex::Ptr<Fru::Gpo> const& presentGpo);
  Kex::KexType& fwkType() const override;
  ~IdentifierBase() override;

  /// `Del` clears the buffer and returns the one that was there. `Is` makes a new one of `size`
  /// bytes: the common area's and the header's with that length, the area's empty.
  virtual BufPtr commonAreaBufDel() { return memberIs(commonAreaBuf_, {}); }
  virtual BufPtr commonAreaBufIs(Kex::U32 size);
  virtual BufPtr productInfoHeaderBufDel() { return memberIs(productInfoHeaderBuf_, {}); }
  /// See `commonAreaBufDel`.
  virtual BufPtr productInfoHeaderBufIs(Kex::U32 size);
  virtual BufPtr productInfoBufDel() { return memberIs(productInfoBuf_, {}); }
  /// See `commonAreaBufDel`.
  virtual BufPtr productInfoBufIs(Kex::U32 size);
  virtual Kex::Ptr<IdpromContents> idpromDel() { return memberIs(idprom_, {}); }
  /// Makes a fresh record.
  virtual Kex::Ptr<IdpromContents> idpromIs();

  BufPtr const& commonAreaBuf() const { return commonAreaBuf_.ptr(); }
  BufPtr const& productInfoHeaderBuf() const { return productInfoHeaderBuf_.ptr(); }
  BufPtr const& productInfoBuf() const { return productInfoBuf_.ptr(); }
  Kex::Ptr<IdpromContents> const& idprom() const { return idprom_.ptr(); }

 protected:
  void doForgetSupply() override;
  PowerSupplyDetector::Findings findings() const override;
  /// The descriptor at which the identification left its walk, if it is the one that gave the FDL.
  std::optional<Kex::String8> managingDescriptor() const override;
  Kex::String8 areaHeader() const override;
  bool isAsRead(Kex::U8 offset, std::span<Kex::U8 const> bytes) const override;

 private:
  using BufMember = Kex::NamedMembers::Member<Hal::Buf>;

  /// Puts `value` into `member`, and returns what was there.
  template <class T>
  Kex::Ptr<T> memberIs(Kex::NamedMembers::Member<T>& member, Kex::Ptr<T> const& value) {
    Kex::Ptr<T> before = member.ptrIs(value);
    handleOutsideChange();
    return before;
  }

  BufMember commonAreaBuf_{members(), "commonAreaBuf"};
  BufMember productInfoHeaderBuf_{members(), "productInfoHeaderBuf"};
  BufMember productInfoBuf_{members(), "productInfoBuf"};
  Kex::NamedMembers::Member<IdpromContents> idprom_{members(), "idprom"};
};

}  // namespace Ipmi
