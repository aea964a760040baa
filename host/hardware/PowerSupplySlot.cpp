// Configuration and status of a power-supply slot.
#include "host/hardware/PowerSupplySlot.h"

#include <algorithm>

#include "host/kex/type/KexType.h"

namespace Hardware::PowerSupplySlot {

Kex::KexType& SlotConfig::_fwkType() {
  static Kex::KexType& record = Kex::newHostType<SlotConfig>(
      "Hardware::PowerSupplySlot::SlotConfig", &Kex::Entity::_fwkType());
  return record;
}

Kex::KexType& SlotConfig::fwkType() const { return _fwkType(); }

SlotConfig::~SlotConfig() = default;

Kex::KexType& SlotStatus::_fwkType() {
  static Kex::KexType& record = Kex::newHostType<SlotStatus>(
      "Hardware::PowerSupplySlot::SlotStatus", &Kex::Entity::_fwkType());
  return record;
}

Kex::KexType& SlotStatus::fwkType() const { return _fwkType(); }

SlotStatus::~SlotStatus() = default;

Supply const* SlotStatus::supply() const {
  auto const best = std::ranges::max_element(
      outcomes_, {}, [](Outcome const& outcome) { return rowOf(outcome.supply.verdict).stage; });
  return best == outcomes_.end() ? nullptr : &best->supply;
}

void SlotStatus::supplyIs(Supply supply, Kex::PtrInterface const* identifier) {
  auto const found = std::ranges::find(outcomes_, identifier, &Outcome::identifier);
  if (found == outcomes_.end()) {
    outcomes_.push_back({.identifier = identifier, .supply = std::move(supply)});
  } else {
    found->supply = std::move(supply);
  }
  changed(kOnSupply);
}

void SlotStatus::supplyDel(Kex::PtrInterface const* identifier) {
  if (std::erase_if(outcomes_, [&](auto const& one) { return one.identifier == identifier; }) !=
      0) {
    changed(kOnSupply);
  }
}

void SlotStatus::NotifieeConst::react(unsigned reaction) {
  if (reaction == kOnSupply) {
    onSupply();
  } else {
    Entity::NotifieeConst::react(reaction);
  }
}

}  // namespace Hardware::PowerSupplySlot

namespace Hardware::PowerSupply {

Kex::KexType& CellConfig::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<CellConfig>("Hardware::PowerSupply::CellConfig", &Kex::Entity::_fwkType());
  return record;
}

Kex::KexType& CellConfig::fwkType() const { return _fwkType(); }

CellConfig::~CellConfig() = default;

}  // namespace Hardware::PowerSupply
