// The types of the module EmersonPmbusIdentifier: the identifier and its factory.
#include "registration/PmbusTypes.h"

#include <array>
#include <string_view>

#include "host/tables/Access.h"
#include "host/tables/TypeTable.h"
#include "pmbus/Identifier.h"
#include "pmbus/IdentifierFactory.h"
#include "pmbus/Trace.h"
#include "registration/IdentifierRows.h"
#include "registration/Module.h"

namespace Emerson::PmbusIdentifier {

namespace {

using Registration::ModuleType;
using Registration::RecordFn;
using Tables::AttrRow;
using FactoryBase = PowerSupplyDetector::IdentifierFactoryBase;

constexpr Tables::ConstructorArgument kIdentifierArguments[] = {
    {"notifier", "Kex::Clock"},
    {"config", "Hardware::PowerSupplySlot::SlotConfig"},
    {"status", "Hardware::PowerSupplySlot::SlotStatus"},
    {"pollForInsertionRequest", "Hardware::VornRequest"},
    {"identifySupplyRequest", "Hardware::VornRequest"},
    {"checkSupplyRequest", "Hardware::VornRequest"},
    {"presentIntCtrl", "Fru::IntCtrl"},
    {"presentIntFd", "Kex::FileDescriptor"},
    {"presentGpo", "Fru::Gpo"},
    {"deviceId", "Hardware::SmbusDeviceId"},
    {"fruInfoCommand", "U8"},
};

constexpr AttrRow kFactoryRows[] = {
    {.name = "doAddIdentifierToDriver",
     .id = 0x102,
     .access = Tables::function<&FactoryBase::doAddIdentifierToDriver>(
         {"driver", "config", "cellConfig", "status"}),
     .introspection = AttrRow::Introspection::function,
     .flags = {0x22001, 0x400}},
};

constexpr Tables::TypeTable kIdentifierTable{
    .shortName = "Identifier",
    .fullName = "Emerson::PmbusIdentifier::Identifier",
    .base = &Ipmi::IdentifierBase::_fwkType,
    .size = sizeof(Identifier),
    .isEntity = false,
    .constructorArguments = kIdentifierArguments,
    .rows = kIdentifierRows,
};

constexpr Tables::TypeTable kIdentifierFactoryTable{
    .shortName = "IdentifierFactory",
    .fullName = "Emerson::PmbusIdentifier::IdentifierFactory",
    .base = &FactoryBase::_fwkType,
    .size = sizeof(IdentifierFactory),
    .isEntity = true,
    .constructorArguments = Tables::kNamedEntityArguments,
    .rows = kFactoryRows,
    .create = [](Kex::Name name) -> Kex::Ptr<Kex::PtrInterface> {
      return identifierFactoryFactory(std::move(name));
    },
};

#define EMERSON_PMBUS_HANDLES(type) \
  constinit std::array<Kex::KexAttr*, k##type##Table.rows.size()> type##Handles{};
EMERSON_PMBUS_TYPES(EMERSON_PMBUS_HANDLES)
#undef EMERSON_PMBUS_HANDLES

constexpr ModuleType kTypes[] = {
#define EMERSON_PMBUS_TYPE(type) {&k##type##Table, &type::_fwkType, type##Handles},
    EMERSON_PMBUS_TYPES(EMERSON_PMBUS_TYPE)
#undef EMERSON_PMBUS_TYPE
};

constexpr RecordFn kFetchOrder[] = {
#define EMERSON_PMBUS_RECORD(type) &type::_fwkType,
    EMERSON_PMBUS_TYPES(EMERSON_PMBUS_RECORD)
#undef EMERSON_PMBUS_RECORD
        & Ipmi::IdentifierBase::_fwkType,
    &FactoryBase::_fwkType};

constinit Registration::Module module("PmbusIdentifier", kTypes, kFetchOrder);

/// Runs when the library is loaded. The trace handle is made as well, for a host to list.
[[maybe_unused]] bool const isLoaded = (module.load(), traceHandle(), true);

}  // namespace

#define EMERSON_PMBUS_FWK_TYPE(type)                                                              \
  Kex::KexType& type::_fwkType() { return Registration::recordOf<type>(module, k##type##Table); } \
  Kex::KexType& type::fwkType() const { return type::_fwkType(); }                                \
  static_assert(std::string_view(k##type##Table.shortName) == #type);
EMERSON_PMBUS_TYPES(EMERSON_PMBUS_FWK_TYPE)
#undef EMERSON_PMBUS_FWK_TYPE

}  // namespace Emerson::PmbusIdentifier
