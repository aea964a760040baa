// Members that an object holds by fixed names, and that have their place there.
#include "host/kex/entity/NamedMembers.h"

#include <algorithm>

namespace Kex {

Owned::~Owned() = default;

String8 Owned::path() const { return place_.path(); }

Ptr<PtrInterface> NamedMembers::member(Name const& name) const {
  auto const found =
      std::ranges::find_if(slots_, [&](Slot const* slot) { return name == slot->name(); });
  return Ptr<PtrInterface>(found == slots_.end() ? nullptr : (*found)->object());
}

std::vector<Name> NamedMembers::names() const {
  std::vector<Name> names;
  for (Slot const* const slot : slots_) {
    if (slot->object() != nullptr) {
      names.emplace_back(slot->name());
    }
  }
  return names;
}

NamedMembers::Slot::Slot(NamedMembers& members, char const* name) : members_(members), name_(name) {
  members_.slots_.push_back(this);
}

NamedMembers::Slot::~Slot() { std::erase(members_.slots_, this); }

void NamedMembers::Slot::heldIs(Owned* object, bool isHeld) const {
  if (object == nullptr) {
    return;
  }
  Place& place = object->place_;
  if (isHeld) {
    place = Place(&members_.owner_, name_);
  } else if (place.owner() == &members_.owner_ && place.name() == name_) {
    // Unless it has found another place in the meantime.
    place = Place();
  }
}

}  // namespace Kex
