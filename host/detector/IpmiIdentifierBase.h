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
  Kex::Ptr<PtrInterface> member(Kex::Name const& name) const override;
  std::vector<Kex::Name> memberNames() const override;

  /// `Del` clears the buffer and returns the one that was there. `Is` makes a new one of `size`
  /// bytes: the common area's and the header's with that length, the area's empty.
  virtual BufPtr commonAreaBufDel() { return std::exchange(commonAreaBuf_, {}); }
  virtual BufPtr commonAreaBufIs(Kex::U32 size);
  virtual BufPtr productInfoHeaderBufDel() { return std::exchange(productInfoHeaderBuf_, {}); }
  virtual BufPtr productInfoHeaderBufIs(Kex::U32 size);
  virtual BufPtr productInfoBufDel() { return std::exchange(productInfoBuf_, {}); }
  virtual BufPtr productInfoBufIs(Kex::U32 size);
  virtual Kex::Ptr<IdpromContents> idpromDel();
  /// Makes a fresh record.
  virtual Kex::Ptr<IdpromContents> idpromIs();

  BufPtr const& commonAreaBuf() const { return commonAreaBuf_; }
  BufPtr const& productInfoHeaderBuf() const { return productInfoHeaderBuf_; }
  BufPtr const& productInfoBuf() const { return productInfoBuf_; }
  Kex::Ptr<IdpromContents> const& idprom() const { return idprom_; }

 protected:
  void doForgetSupply() override;
  PowerSupplyDetector::Findings findings() const override;
  /// The descriptor at which the identification left its walk, if it is the one that gave the FDL.
  std::optional<Kex::String8> managingDescriptor() const override;
  Kex::String8 areaHeader() const override;

 private:
  BufPtr commonAreaBuf_;
  BufPtr productInfoHeaderBuf_;
  BufPtr productInfoBuf_;
  Kex::Ptr<IdpromContents> idprom_;
};

}  // namespace Ipmi
