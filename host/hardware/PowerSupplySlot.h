// Configuration and status of a power-supply slot.
#pragma once

#include <vector>

#include "host/hardware/Supply.h"
#include "host/hardware/Vorn.h"
#include "host/kex/entity/Entity.h"

namespace Hardware::PowerSupplySlot {

/// What a slot is: its name and its way to the bus.
class KEX_API SlotConfig final : public Kex::Entity {
 public:
  static Kex::KexType& _fwkType();

  SlotConfig(Kex::Name name, Kex::Ptr<SmbusVorn::VornDesc const> smbusVornDesc)
      : Entity(std::move(name)), smbusVornDesc_(std::move(smbusVornDesc)) {}
  Kex::KexType& fwkType() const override;
  ~SlotConfig() override;

  Kex::Ptr<SmbusVorn::VornDesc const> const& smbusVornDesc() const { return smbusVornDesc_; }

 private:
  Kex::Ptr<SmbusVorn::VornDesc const> smbusVornDesc_;
};

/// What is known of a slot's supply.
class KEX_API SlotStatus final : public Kex::Entity {
 public:
  class NotifieeConst;
  class Notifiee;

  static Kex::KexType& _fwkType();

  explicit SlotStatus(Kex::Name name) : Entity(std::move(name)) {}
  Kex::KexType& fwkType() const override;
  ~SlotStatus() override;

  /// The best of what the slot's identifiers came to last: the one that got furthest on the
  /// supply's road, of two the one that was there first. Null before the first detection has ended.
  Supply const* supply() const;
  /// What `identifier` came to, in place of what it came to before. It is not owned, only told
  /// apart from others; null for somebody else.
  void supplyIs(Supply supply, Kex::PtrInterface const* identifier = nullptr);
  /// Forgets what `identifier` came to.
  void supplyDel(Kex::PtrInterface const* identifier);

  /// The reaction to a new outcome.
  static constexpr unsigned kOnSupply = kReactionsEnd;

 private:
  struct Outcome {
    Kex::PtrInterface const* identifier;
    Supply supply;
  };

  std::vector<Outcome> outcomes_;
};

/// Reacts to the end of a detection.
class KEX_API SlotStatus::NotifieeConst
    : public Kex::NotifieeConstOf<SlotStatus, Kex::Entity::NotifieeConst> {
 public:
  using NotifieeConstOf::NotifieeConstOf;

 protected:
  virtual void onSupply() {}
  void react(unsigned reaction) override;
};

/// The same, for reactors that change what they observe.
class KEX_API SlotStatus::Notifiee : public Kex::NotifieeOf<SlotStatus, SlotStatus::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
};

}  // namespace Hardware::PowerSupplySlot

namespace Hardware::PowerSupply {

/// What the cell behind a slot is configured to be.
class KEX_API CellConfig final : public Kex::Entity {
 public:
  static Kex::KexType& _fwkType();

  using Entity::Entity;
  Kex::KexType& fwkType() const override;
  ~CellConfig() override;
};

}  // namespace Hardware::PowerSupply
