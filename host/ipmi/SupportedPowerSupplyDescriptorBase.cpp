// Base of the descriptors of supported power supplies.
#include "host/ipmi/SupportedPowerSupplyDescriptorBase.h"

#include "host/tables/Access.h"
#include "host/tables/TypeTable.h"

namespace Ipmi {

namespace {

using Base = SupportedPowerSupplyDescriptorBase;
using Tables::AttrRow;

constexpr AttrRow kRows[] = {
    {.name = "managed",
     .id = 0x100,
     .access = Tables::value<&Base::managed>,
     .introspection = AttrRow::Introspection::independentDomainAttr,
     .flags = {0x220101, 0x400}},
    {.name = "fdl",
     .id = 0x101,
     .access = Tables::value<&Base::fdl>,
     .introspection = AttrRow::Introspection::independentDomainAttr,
     .flags = {0x220101, 0x400}},
    {.name = "doGenerateFdl",
     .id = 0x102,
     .access = Tables::function<&Base::doGenerateFdl>({"idpromContents"}),
     .introspection = AttrRow::Introspection::function,
     .flags = {0x20001, 0x400}},
};

constexpr Tables::TypeTable kTable{
    .shortName = "SupportedPowerSupplyDescriptorBase",
    .fullName = "Ipmi::SupportedPowerSupplyDescriptorBase",
    .base = &Kex::Entity::_fwkType,
    .size = sizeof(Base),
    .isEntity = true,
    .constructorArguments = Tables::kNamedEntityArguments,
    .rows = kRows,
};

}  // namespace

Kex::KexType& SupportedPowerSupplyDescriptorBase::_fwkType() {
  static Kex::KexType& record = Tables::newTableHostType(kTable);
  return record;
}

Kex::KexType& SupportedPowerSupplyDescriptorBase::fwkType() const { return _fwkType(); }

SupportedPowerSupplyDescriptorBase::~SupportedPowerSupplyDescriptorBase() = default;

void SupportedPowerSupplyDescriptorBase::managedIs(bool managed) {
  if (managed_ != managed) {
    managed_ = managed;
    changed(kOnManaged);
  }
}

void SupportedPowerSupplyDescriptorBase::fdlIs(Kex::String8 fdl) {
  if (fdl_ != fdl) {
    fdl_ = std::move(fdl);
    changed(kOnFdl);
  }
}

void SupportedPowerSupplyDescriptorBase::NotifieeConst::react(unsigned reaction) {
  switch (reaction) {
    case kOnManaged: return onManaged();
    case kOnFdl: return onFdl();
    default: return Entity::NotifieeConst::react(reaction);
  }
}

}  // namespace Ipmi
