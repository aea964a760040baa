// Members that an object holds by fixed names, and that have their place there.
#include "host/kex/entity/NamedMembers.h"

namespace Kex {

Owned::~Owned() = default;

String8 Owned::path() const { return slot_ == nullptr ? String8() : slot_->place().path(); }

Ptr<PtrInterface> NamedMembers::member(Name const& name) const {
  Slot const* slot = firstSlot_;
  while (slot != nullptr && !(name == slot->name())) {
    slot = slot->next();
  }
  return Ptr<PtrInterface>(slot == nullptr ? nullptr : slot->object());
}

std::vector<Name> NamedMembers::names() const {
  std::vector<Name> names;
  for (Slot const* slot = firstSlot_; slot != nullptr; slot = slot->next()) {
    if (slot->object() != nullptr) {
      names.emplace_back(slot->name());
    }
  }
  return names;
}

NamedMembers::Slot::Slot(NamedMembers& members, char const* name) : members_(members), name_(name) {
  Slot** end = &members.firstSlot_;
  while (*end != nullptr) {
    end = &(*end)->next_;
  }
  *end = this;
}

NamedMembers::Slot::~Slot() {
  Slot** link = &members_.firstSlot_;
  while (*link != this) {
    link = &(*link)->next_;
  }
  *link = next_;
}

void NamedMembers::Slot::heldIs(Owned* object, bool isHeld) const {
  if (object == nullptr) {
    return;
  }
  if (isHeld) {
    object->slot_ = this;
  } else if (object->slot_ == this) {
    // Unless it has found another place in the meantime.
    object->slot_ = nullptr;
  }
}

}  // namespace Kex
