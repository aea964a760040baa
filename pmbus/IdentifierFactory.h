// Emerson::PmbusIdentifier::IdentifierFactory, what gives slots their identifiers.
#pragma once

#include "host/detector/IdentifierFactoryBase.h"
#include "host/kex/base/Export.h"

namespace Emerson::PmbusIdentifier {

/// Attaches a PMBus identifier to a slot's driver, under the name "EmersonPmbus".
class IdentifierFactory final : public PowerSupplyDetector::IdentifierFactoryBase {
 public:
  class NotifieeConst;
  class Notifiee;

  static Kex::KexType& _fwkType();

  explicit IdentifierFactory(Kex::Name name) : IdentifierFactoryBase(std::move(name)) {}
  Kex::KexType& fwkType() const override;
  ~IdentifierFactory() override;
  /// The name of the factory's attribute of this identifier.
  Kex::String8 attributeString(Kex::AttributeId id) const override;

  /// Makes an identifier with three fresh requests on the slot's bus, for a supply at the device
  /// address 0x58 whose FRU data is read through command 0xB0. `cellConfig` is not used.
  void doAddIdentifierToDriver(
      Kex::Ptr<PowerSupplyDetector::SlotDriver> const& driver,
      Kex::Ptr<Hardware::PowerSupplySlot::SlotConfig const> const& config,
      Kex::Ptr<Hardware::PowerSupply::CellConfig> const& cellConfig,
      Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus> const& status) override;
};

/// Reacts to changes of a factory of this type.
class IdentifierFactory::NotifieeConst
    : public Kex::NotifieeConstOf<IdentifierFactory,
                                  PowerSupplyDetector::IdentifierFactoryBase::NotifieeConst> {
 public:
  using NotifieeConstOf::NotifieeConstOf;
};

/// The same, for reactors that change what they observe.
class IdentifierFactory::Notifiee
    : public Kex::NotifieeOf<IdentifierFactory, IdentifierFactory::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
};

/// A new factory of this name; never null.
KEX_API Kex::Ptr<IdentifierFactory> identifierFactoryFactory(Kex::Name name);

}  // namespace Emerson::PmbusIdentifier
