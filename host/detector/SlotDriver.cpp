// PowerSupplyDetector::SlotDriver, what holds and drives the identifiers of a slot.
#include "host/detector/SlotDriver.h"

#include "host/kex/type/KexType.h"

namespace PowerSupplyDetector {

Kex::KexType& SlotDriver::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<SlotDriver>("PowerSupplyDetector::SlotDriver", &Kex::Entity::_fwkType());
  return record;
}

Kex::KexType& SlotDriver::fwkType() const { return _fwkType(); }

SlotDriver::~SlotDriver() {
  while (!identifiers_.empty()) {
    identifierDel(Kex::String8(identifiers_.begin()->first));
  }
}

Kex::Ptr<Kex::PtrInterface> SlotDriver::member(Kex::Name const& name) const {
  return identifier(name.str());
}

std::vector<Kex::Name> SlotDriver::memberNames() const {
  std::vector<Kex::Name> names;
  names.reserve(identifiers_.size());
  for (auto const& [name, identifier] : identifiers_) {
    names.emplace_back(name);
  }
  return names;
}

Kex::Ptr<IdentifierBase> SlotDriver::identifier(Kex::String8 const& name) const {
  auto const found = identifiers_.find(name);
  return found == identifiers_.end() ? Kex::Ptr<IdentifierBase>() : found->second;
}

void SlotDriver::identifierIs(Kex::String8 const& name,
                              Kex::Ptr<IdentifierBase> const& identifier) {
  if (this->identifier(name) == identifier) {
    return;
  }
  identifier->placeIs({this, Kex::Name(name)});
  try {
    identifier->doPrepare();
  } catch (...) {
    // The one before stays, and goes on.
    identifier->placeIs({});
    throw;
  }
  identifierDel(name);
  identifiers_[name] = identifier;
  identifier->doStartDetection();
}

Kex::Ptr<IdentifierBase> SlotDriver::identifierDel(Kex::String8 const& name) {
  auto const found = identifiers_.find(name);
  if (found == identifiers_.end()) {
    return {};
  }
  Kex::Ptr<IdentifierBase> removed = found->second;
  identifiers_.erase(found);
  removed->hasNotificationActiveIs(false);
  removed->kexDoZombieReactors(true);
  removed->placeIs({});
  return removed;
}

}  // namespace PowerSupplyDetector
