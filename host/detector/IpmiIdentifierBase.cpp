// Ipmi::IdentifierBase, what identifiers that read IPMI FRU data have in common.
#include "host/detector/IpmiIdentifierBase.h"

#include <algorithm>

#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/tables/Access.h"
#include "host/tables/TypeTable.h"

namespace Ipmi {

namespace {

using Base = IdentifierBase;
using Kex::Ptr;

constexpr Kex::KexAttrFlags kReadOnly{0x220001, 0x400};

constexpr Tables::AttrRow kRows[] = {
    {.name = "commonAreaBuf",
     .id = 0x200,
     .access = Tables::value<&Base::commonAreaBuf>,
     .flags = kReadOnly},
    {.name = "productInfoHeaderBuf",
     .id = 0x201,
     .access = Tables::value<&Base::productInfoHeaderBuf>,
     .flags = kReadOnly},
    {.name = "productInfoBuf",
     .id = 0x202,
     .access = Tables::value<&Base::productInfoBuf>,
     .flags = kReadOnly},
    {.name = "idprom", .id = 0x203, .access = Tables::value<&Base::idprom>, .flags = kReadOnly},
};

constexpr Tables::TypeTable kTable{
    .shortName = "IdentifierBase",
    .fullName = "Ipmi::IdentifierBase",
    .base = &PowerSupplyDetector::IdentifierBase::_fwkType,
    .size = sizeof(Base),
    .isEntity = false,
    .constructorArguments = {},
    .rows = kRows,
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
  static Kex::KexType& record = Tables::newTableHostType(kTable);
  return record;
}

IdentifierBase::IdentifierBase(
    Ptr<Kex::Clock const> const& clock, SlotConfigPtr const& config, SlotStatusPtr const& status,
    RequestPtr const& pollForInsertionRequest, RequestPtr const& identifySupplyRequest,
    RequestPtr const& checkSupplyRequest, Ptr<Fru::IntCtrl> const& presentIntCtrl,
    Ptr<Kex::FileDescriptor const> const& presentIntFd, Ptr<Fru::Gpo> const& presentGpo)
    : PowerSupplyDetector::IdentifierBase(clock, config, status, pollForInsertionRequest,
                                          identifySupplyRequest, checkSupplyRequest, presentIntCtrl,
                                          presentIntFd, presentGpo) {
  commonAreaBuf_.ptrIs(filledBuf(CommonAreaHeader::kLength));
  productInfoHeaderBuf_.ptrIs(filledBuf(kProductInfoHeaderLength));
}

Kex::KexType& IdentifierBase::fwkType() const { return _fwkType(); }

IdentifierBase::~IdentifierBase() = default;

IdentifierBase::BufPtr IdentifierBase::commonAreaBufIs(Kex::U32 size) {
  memberIs(commonAreaBuf_, filledBuf(size));
  return commonAreaBuf();
}

IdentifierBase::BufPtr IdentifierBase::productInfoHeaderBufIs(Kex::U32 size) {
  memberIs(productInfoHeaderBuf_, filledBuf(size));
  return productInfoHeaderBuf();
}

IdentifierBase::BufPtr IdentifierBase::productInfoBufIs(Kex::U32 size) {
  memberIs(productInfoBuf_, Kex::make<Hal::Buf>(size));
  return productInfoBuf();
}

Ptr<IdpromContents> IdentifierBase::idpromIs() {
  memberIs(idprom_, Kex::make<IdpromContents>());
  return idprom();
}

void IdentifierBase::doForgetSupply() {
  // What somebody has taken away, or made of another size, is put right.
  if (!commonAreaBuf() || commonAreaBuf()->len() != CommonAreaHeader::kLength) {
    commonAreaBufIs(CommonAreaHeader::kLength);
  }
  if (!productInfoHeaderBuf() || productInfoHeaderBuf()->len() != kProductInfoHeaderLength) {
    productInfoHeaderBufIs(kProductInfoHeaderLength);
  }
  if (idprom()) {
    idprom()->headerIs({});
    idprom()->productInfoIs({});
  } else {
    idpromIs();
  }
}

PowerSupplyDetector::Findings IdentifierBase::findings() const {
  PowerSupplyDetector::Findings found;
  if (idprom() && idprom()->header()) {
    found.headerFault = faultText(*idprom()->header());
  }
  if (idprom()) {
    found.product = idprom()->productInfo();
  }
  found.hasArea = bool(productInfoBuf());
  found.areaFault = found.hasArea && found.product
                        ? faultText(*found.product)
                        : faultText(ProductInfoArea(*productInfoHeaderBuf()));
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

Kex::String8 IdentifierBase::areaHeader() const { return productInfoHeaderBuf()->str(); }

bool IdentifierBase::isAsRead(Kex::U8 offset, std::span<Kex::U8 const> bytes) const {
  if (!idprom() || !idprom()->header()) {
    return false;
  }
  auto const& buffer = productInfoBuf() ? productInfoBuf() : productInfoHeaderBuf();
  std::size_t const start = static_cast<Kex::U8>(offset - idprom()->header()->productAreaOffset());
  auto const area = buffer->bytes();
  return start + bytes.size() <= area.size() &&
         std::ranges::equal(bytes, area.subspan(start, bytes.size()));
}

}  // namespace Ipmi
