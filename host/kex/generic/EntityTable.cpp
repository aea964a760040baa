// The table of Kex::Entity: the attributes that every entity has.
#include "host/tables/EntityTable.h"

#include "host/tables/Access.h"

namespace Kex {

namespace {

Ptr<Entity> parentOf(Entity const& entity) { return Ptr<Entity>(entity.parent()); }

/// The parent is not owned, so it is read through a function that makes a reference of it.
constexpr AttrAccess kParent{.valueType = &Entity::_fwkType,
                             .carryOut = [](AttrRow const& row, PtrInterface& object,
                                            AttributeRequest const& request) -> Ptr<GenericIf> {
                               Detail::refuseIndex(row, request);
                               if (request.code != kRead) {
                                 GenericIf::throwOpNotSupportedException(row.name, request.code,
                                                                         false);
                               }
                               return holderOf(parentOf(dynamic_cast<Entity const&>(object)));
                             }};

constexpr AttrRow kRows[] = {
    {.name = "name", .id = 0x1, .access = value<&Entity::name>, .flags = {0x220001, 0x400}},
    {.name = "parent", .id = 0x2, .access = kParent, .flags = {0x220001, 0x400}},
    {.name = "version", .id = 0x3, .access = value<&Entity::version>, .flags = {0x220001, 0x400}},
    {.name = "isNondestructing",
     .id = 0x4,
     .access = value<&Entity::isNondestructing>,
     .flags = {0x220001, 0x400}},
};

constexpr TypeTable kTable{
    .shortName = "Entity",
    .fullName = "Kex::Entity",
    .base = &PtrInterface::_fwkType,
    .size = sizeof(Entity),
    .isEntity = true,
    .constructorArguments = kNamedEntityArguments,
    .rows = kRows,
};

}  // namespace

KexType& Entity::_fwkType() {
  static KexType& record = newTableHostType(kTable);
  return record;
}

}  // namespace Kex
