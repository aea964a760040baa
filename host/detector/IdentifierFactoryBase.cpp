// Base of the factories that attach identifiers to slot drivers.
#include "host/detector/IdentifierFactoryBase.h"

#include "host/tables/Access.h"
#include "host/tables/EntityTable.h"

namespace PowerSupplyDetector {

namespace {

using Base = IdentifierFactoryBase;

constexpr Kex::AttrRow kRows[] = {
    {.name = "doAddIdentifierToDriver",
     .id = 0x102,
     .access = Kex::function<&Base::doAddIdentifierToDriver>(
         {"driver", "config", "cellConfig", "status"}),
     .introspection = Kex::AttrRow::Introspection::function,
     .flags = {0x22001, 0x400}},
};

constexpr Kex::TypeTable kTable{
    .shortName = "IdentifierFactoryBase",
    .fullName = "PowerSupplyDetector::IdentifierFactoryBase",
    .base = &Kex::Entity::_fwkType,
    .size = sizeof(Base),
    .isEntity = true,
    .constructorArguments = Kex::kNamedEntityArguments,
    .rows = kRows,
};

}  // namespace

Kex::KexType& IdentifierFactoryBase::_fwkType() {
  static Kex::KexType& record = Kex::newTableHostType(kTable);
  return record;
}

Kex::KexType& IdentifierFactoryBase::fwkType() const { return _fwkType(); }

IdentifierFactoryBase::~IdentifierFactoryBase() = default;

}  // namespace PowerSupplyDetector
