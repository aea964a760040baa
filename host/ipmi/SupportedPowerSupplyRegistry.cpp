// The registry of supported power supplies.
#include "host/ipmi/SupportedPowerSupplyRegistry.h"

#include "host/tables/TypeTable.h"

namespace Ipmi {

namespace {

using Kex::Ptr;

constexpr Tables::TypeTable kTable{
    .shortName = "SupportedPowerSupplyRegistry",
    .fullName = "Ipmi::SupportedPowerSupplyRegistry",
    .base = &Kex::Entity::_fwkType,
    .size = sizeof(SupportedPowerSupplyRegistry),
    .isEntity = true,
    .constructorArguments = Tables::kNamedEntityArguments,
    .rows = {},
    .create = [](Kex::Name name) -> Ptr<Kex::PtrInterface> {
      return Kex::make<SupportedPowerSupplyRegistry>(std::move(name));
    },
};

}  // namespace

Kex::KexType& SupportedPowerSupplyRegistry::_fwkType() {
  static Kex::KexType& record = Tables::newTableHostType(kTable);
  return record;
}

Kex::KexType& SupportedPowerSupplyRegistry::fwkType() const { return _fwkType(); }

SupportedPowerSupplyRegistry::~SupportedPowerSupplyRegistry() {
  for (Descriptors const* const place : {&descriptors_, &supplements_}) {
    for (auto walk = place->begin(); walk; ++walk) {
      walk->parentIs(nullptr);
    }
  }
}

Ptr<Kex::PtrInterface> SupportedPowerSupplyRegistry::member(Kex::Name const& name) const {
  auto const descriptor = descriptors_.member(name.str());
  return descriptor ? descriptor : supplements_.member(name.str());
}

std::vector<Kex::Name> SupportedPowerSupplyRegistry::memberNames() const {
  std::vector<Kex::Name> names;
  for (Descriptors const* const place : {&descriptors_, &supplements_}) {
    for (auto walk = place->begin(); walk; ++walk) {
      names.push_back(walk->name());
    }
  }
  return names;
}

void SupportedPowerSupplyRegistry::powerSupplyDescriptorIs(
    Ptr<SupportedPowerSupplyDescriptorBase> const& descriptor) {
  take(descriptors_, descriptor);
}

void SupportedPowerSupplyRegistry::supplementIs(
    Ptr<SupportedPowerSupplyDescriptorBase> const& descriptor) {
  take(supplements_, descriptor);
}

void SupportedPowerSupplyRegistry::take(Descriptors& place,
                                        Ptr<SupportedPowerSupplyDescriptorBase> const& descriptor) {
  powerSupplyDescriptorDel(descriptor->name());
  place.memberIs(descriptor);
  descriptor->parentIs(this);
}

Ptr<SupportedPowerSupplyDescriptorBase> SupportedPowerSupplyRegistry::powerSupplyDescriptorDel(
    Kex::Name const& name) {
  Ptr<SupportedPowerSupplyDescriptorBase> removed = descriptors_.memberDel(name.str());
  if (!removed) {
    removed = supplements_.memberDel(name.str());
  }
  if (removed) {
    removed->parentIs(nullptr);
  }
  return removed;
}

}  // namespace Ipmi
