// Ipmi::IdentifierBase, what identifiers that read IPMI FRU data have in common.
#include "host/detector/IpmiIdentifierBase.h"

#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/tables/Access.h"
#include "host/tables/TypeTable.h"

namespace Ipmi {

namespace {

using Base = IdentifierBase;
using Kex::Ptr;

constexpr Kex::KexAttrFlags kReadOnly{0x220001, 0x400};

constexpr Kex::AttrRow kRows[] = {
    {.name = "commonAreaBuf",
     .id = 0x200,
     .access = Kex::value<&Base::commonAreaBuf>,
     .flags = kReadOnly},
    {.name = "productInfoHeaderBuf",
     .id = 0x201,
     .access = Kex::value<&Base::productInfoHeaderBuf>,
     .flags = kReadOnly},
    {.name = "productInfoBuf",
     .id = 0x202,
     .access = Kex::value<&Base::productInfoBuf>,
     .flags = kReadOnly},
    {.name = "idprom", .id = 0x203, .access = Kex::value<&Base::idprom>, .flags = kReadOnly},
};

constexpr Kex::TypeTable::RecordFn kCastChain[] = {
    &Base::_fwkType, &PowerSupplyDetector::IdentifierBase::_fwkType,
    &Kex::Entity::NotifieeConst::_fwkType, &Kex::PtrInterface::NotifieeConst::_fwkType,
    &Kex::PtrInterface::_fwkType};

constexpr Kex::TypeTable kTable{
    .shortName = "IdentifierBase",
    .fullName = "Ipmi::IdentifierBase",
    .base = &PowerSupplyDetector::IdentifierBase::_fwkType,
    .size = sizeof(Base),
    .isEntity = false,
    .constructorArguments = {},
    .rows = kRows,
    .castChain = kCastChain,
};

Base::BufPtr filledBuf(Kex::U32 size) {
  auto buffer = Kex::make<Hal::Buf>(size);
  buffer->lenIs(size);
  return buffer;
}

template <class Record>
Kex::String8 faultText(Record const& record) {
  auto const fault = record.fault();
  return fault ? fault->text : Kex::String8();
}

}  // namespace

Kex::KexType& IdentifierBase::_fwkType() {
  static Kex::KexType& record = Kex::newTableHostType(kTable);
  return record;
}

IdentifierBase::IdentifierBase(
    Ptr<Kex::Clock const> const& clock, SlotConfigPtr const& config, SlotStatusPtr const& status,
    RequestPtr const& pollForInsertionRequest, RequestPtr const& identifySupplyRequest,
    RequestPtr const& checkSupplyRequest, Ptr<Fru::IntCtrl> const& presentIntCtrl,
    Ptr<Kex::FileDescriptor const> const& presentIntFd, Ptr<Fru::Gpo> const& presentGpo)
    : PowerSupplyDetector::IdentifierBase(clock, config, status, pollForInsertionRequest,
                                          identifySupplyRequest, checkSupplyRequest, presentIntCtrl,
                                          presentIntFd, presentGpo),
      commonAreaBuf_(filledBuf(CommonAreaHeader::kLength)),
      productInfoHeaderBuf_(filledBuf(kProductInfoHeaderLength)) {}

Kex::KexType& IdentifierBase::fwkType() const { return _fwkType(); }

IdentifierBase::~IdentifierBase() {
  if (idprom_) {
    idprom_->ownerIs(nullptr);
  }
}

Ptr<Kex::PtrInterface> IdentifierBase::member(Kex::Name const& name) const {
  return name == "idprom" ? Ptr<PtrInterface>(idprom_) : Ptr<PtrInterface>();
}

std::vector<Kex::Name> IdentifierBase::memberNames() const { return {"idprom"}; }

IdentifierBase::BufPtr IdentifierBase::commonAreaBufIs(Kex::U32 size) {
  return commonAreaBuf_ = filledBuf(size);
}

IdentifierBase::BufPtr IdentifierBase::productInfoHeaderBufIs(Kex::U32 size) {
  return productInfoHeaderBuf_ = filledBuf(size);
}

IdentifierBase::BufPtr IdentifierBase::productInfoBufIs(Kex::U32 size) {
  return productInfoBuf_ = Kex::make<Hal::Buf>(size);
}

Ptr<IdpromContents> IdentifierBase::idpromDel() {
  if (idprom_) {
    idprom_->ownerIs(nullptr);
  }
  return std::exchange(idprom_, {});
}

Ptr<IdpromContents> IdentifierBase::idpromIs() {
  IdentifierBase::idpromDel();
  idprom_ = Kex::make<IdpromContents>();
  idprom_->ownerIs(this);
  return idprom_;
}

void IdentifierBase::doForgetSupply() {
  if (idprom_) {
    idprom_->headerIs({});
    idprom_->productInfoIs({});
  }
}

PowerSupplyDetector::Findings IdentifierBase::findings() const {
  PowerSupplyDetector::Findings found;
  if (idprom_ && idprom_->header()) {
    found.headerFault = faultText(*idprom_->header());
  }
  if (idprom_) {
    found.product = idprom_->productInfo();
  }
  found.hasArea = bool(productInfoBuf_);
  found.areaFault = found.hasArea && found.product
                        ? faultText(*found.product)
                        : faultText(ProductInfoArea(*productInfoHeaderBuf_));
  return found;
}

std::optional<Kex::String8> IdentifierBase::managingDescriptor() const {
  auto const registry = Kex::Entity::singleton<SupportedPowerSupplyRegistry>();
  // Identification walks up to the descriptor whose FDL it takes. It need not have walked at all.
  auto const reached = registry->reachedDescriptorDel();
  return reached && reached->managed() && reached->fdl() == fdl()
             ? std::optional(reached->fwkType().name().str())
             : std::nullopt;
}

Kex::String8 IdentifierBase::areaHeader() const { return productInfoHeaderBuf_->str(); }

}  // namespace Ipmi
