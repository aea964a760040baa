// Ipmi::IdpromContents, what was parsed of one supply's FRU data.
#pragma once

#include "host/ipmi/CommonAreaHeader.h"
#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/entity/NamedMembers.h"

namespace Ipmi {

/// The parsed records of one supply; each is null until it was read.
class KEX_API IdpromContents final : public Kex::Owned {
 public:
  static Kex::KexType& _fwkType();

  IdpromContents() = default;
  Kex::KexType& fwkType() const override;
  ~IdpromContents() override;

  Kex::Ptr<CommonAreaHeader> const& header() const { return header_; }
  void headerIs(Kex::Ptr<CommonAreaHeader> const& header) { header_ = header; }
  Kex::Ptr<ProductInfoArea> const& productInfo() const { return productInfo_; }
  void productInfoIs(Kex::Ptr<ProductInfoArea> const& area) { productInfo_ = area; }

 private:
  Kex::Ptr<CommonAreaHeader> header_;
  Kex::Ptr<ProductInfoArea> productInfo_;
};

}  // namespace Ipmi
