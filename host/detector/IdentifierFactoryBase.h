// Base of the factories that attach identifiers to slot drivers.
#pragma once

#include "host/detector/SlotDriver.h"

namespace PowerSupplyDetector {

/// Makes identifiers of one kind, one for each slot.
class KEX_API IdentifierFactoryBase : public Kex::Entity {
 public:
  class NotifieeConst;
  class Notifiee;

  static Kex::KexType& _fwkType();

  explicit IdentifierFactoryBase(Kex::Name name) : Entity(std::move(name)) {}
  Kex::KexType& fwkType() const override;
  ~IdentifierFactoryBase() override;

  /// Makes an identifier for the slot that `config` describes, whose outcome goes to `status`, and
  /// attaches it to `driver`.
  virtual void doAddIdentifierToDriver(
      Kex::Ptr<SlotDriver> const& driver,
      Kex::Ptr<Hardware::PowerSupplySlot::SlotConfig const> const& config,
      Kex::Ptr<Hardware::PowerSupply::CellConfig> const& cellConfig,
      Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus> const& status) = 0;
};

/// Reacts to changes of a factory.
class KEX_API IdentifierFactoryBase::NotifieeConst
    : public Kex::NotifieeConstOf<IdentifierFactoryBase, Kex::Entity::NotifieeConst> {
 public:
  using NotifieeConstOf::NotifieeConstOf;
};

/// The same, for reactors that change what they observe.
class KEX_API IdentifierFactoryBase::Notifiee
    : public Kex::NotifieeOf<IdentifierFactoryBase, IdentifierFactoryBase::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
};

}  // namespace PowerSupplyDetector
