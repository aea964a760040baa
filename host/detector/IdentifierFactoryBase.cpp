// Base of the factories that attach identifiers to slot drivers.
#include "host/detector/IdentifierFactoryBase.h"

#include "host/tables/Access.h"
#include "host/tables/TypeTable.h"

namespace PowerSupplyDetector {

namespace {

using Base = IdentifierFactoryBase;

constexpr Tables::AttrRow kRows[] = {
    {.name = "doAddIdentifierToDriver",
     .id = 0x102,
     .access = Tables::function<&Base::doAddIdentifierToDriver>(
         {"driver", "config", "cellConfig", "status"}),
     .introspection = Tables::AttrRow::Introspection::function,
     .flags = {0x22001, 0x400}},
};

constexpr Tables::TypeTable kTable{
    .shortName = "IdentifierFactoryBase",
    .fullName = "PowerSupplyDetector::IdentifierFactoryBase",
    .base = &Kex::Entity::_fwkType,
    .size = sizeof(Base),
    .isEntity = true,
    .constructorArguments = Tables::kNamedEntityArguments,
    .rows = kRows,
};

}  // namespace

Kex::KexType& IdentifierFactoryBase::_fwkType() {
  static Kex::KexType& record = Tables::newTableHostType(kTable);
  return record;
}

Kex::KexType& IdentifierFactoryBase::fwkType() const { return _fwkType(); }

IdentifierFactoryBase::~IdentifierFactoryBase() = default;

}  // namespace PowerSupplyDetector
