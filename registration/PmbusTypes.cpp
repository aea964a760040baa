// The types of the module EmersonPmbusIdentifier: the identifier and its factory.
#include "registration/PmbusTypes.h"

#include <array>

#include "host/tables/Access.h"
#include "host/tables/EntityTable.h"
#include "pmbus/Identifier.h"
#include "pmbus/IdentifierFactory.h"
#include "registration/IdentifierRows.h"
#include "registration/Module.h"

namespace Emerson::PmbusIdentifier {

namespace {

using Kex::AttrRow;
using Registration::ModuleType;
using Registration::RecordFn;
using FactoryBase = PowerSupplyDetector::IdentifierFactoryBase;

constexpr RecordFn kIdentifierCastChain[] = {&Identifier::_fwkType,
                                             &Ipmi::IdentifierBase::_fwkType,
                                             &PowerSupplyDetector::IdentifierBase::_fwkType,
                                             &Kex::Entity::NotifieeConst::_fwkType,
                                             &Kex::PtrInterface::NotifieeConst::_fwkType,
                                             &Kex::PtrInterface::_fwkType};

constexpr Kex::ConstructorArgument kIdentifierArguments[] = {
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
     .access = Kex::function<&FactoryBase::doAddIdentifierToDriver>,
     .arguments = {"driver", "config", "cellConfig", "status"},
     .introspection = AttrRow::Introspection::function,
     .flags = {0x22001, 0x400}},
};

constexpr RecordFn kFactoryCastChain[] = {&IdentifierFactory::_fwkType, &FactoryBase::_fwkType,
                                          &Kex::Entity::_fwkType, &Kex::PtrInterface::_fwkType};

constexpr Kex::TypeTable kIdentifierTable{
    .shortName = "Identifier",
    .fullName = "Emerson::PmbusIdentifier::Identifier",
    .base = &Ipmi::IdentifierBase::_fwkType,
    .size = sizeof(Identifier),
    .isEntity = false,
    .constructorArguments = kIdentifierArguments,
    .rows = kIdentifierRows,
    .castChain = kIdentifierCastChain,
};

constexpr Kex::TypeTable kFactoryTable{
    .shortName = "IdentifierFactory",
    .fullName = "Emerson::PmbusIdentifier::IdentifierFactory",
    .base = &FactoryBase::_fwkType,
    .size = sizeof(IdentifierFactory),
    .isEntity = true,
    .constructorArguments = Kex::kNamedEntityArguments,
    .rows = kFactoryRows,
    .castChain = kFactoryCastChain,
    .create = [](Kex::Name name) -> Kex::Ptr<Kex::PtrInterface> {
      return identifierFactoryFactory(std::move(name));
    },
};

constinit std::array<Kex::KexAttr*, kIdentifierRows.size()> identifierHandles{};
constinit std::array<Kex::KexAttr*, std::size(kFactoryRows)> factoryHandles{};

constexpr ModuleType kTypes[] = {
    {&kIdentifierTable, &Identifier::_fwkType, identifierHandles},
    {&kFactoryTable, &IdentifierFactory::_fwkType, factoryHandles},
};

constexpr RecordFn kFetchOrder[] = {&Identifier::_fwkType, &IdentifierFactory::_fwkType,
                                    &Ipmi::IdentifierBase::_fwkType, &FactoryBase::_fwkType};

constinit Registration::Module module("PmbusIdentifier", kTypes, kFetchOrder);

/// Runs when the library is loaded.
[[maybe_unused]] bool const isLoaded = (module.load(), true);

}  // namespace

Kex::KexType& Identifier::_fwkType() {
  return Registration::recordOf<Identifier>(module, kIdentifierTable);
}

Kex::KexType& Identifier::fwkType() const { return _fwkType(); }

Kex::KexType& IdentifierFactory::_fwkType() {
  return Registration::recordOf<IdentifierFactory>(module, kFactoryTable);
}

Kex::KexType& IdentifierFactory::fwkType() const { return _fwkType(); }

}  // namespace Emerson::PmbusIdentifier
