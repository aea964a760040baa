// Named objects with a place in the tree of entities.
#include "host/kex/entity/Entity.h"

#include "host/kex/entity/Place.h"

namespace Kex {

KexType& Entity::fwkType() const { return _fwkType(); }

Entity::~Entity() = default;

String8 Entity::path() const {
  return parent_ == nullptr ? String8(escapedName(name_)) : Place(parent_, name_).path();
}

Ptr<Entity> Entity::memberDel(Name const&) { return {}; }

void Entity::parentIs(Entity* parent) {
  if (parent_ == parent) {
    return;
  }
  if (parent != nullptr && parent_ != nullptr) {
    parent_->memberDel(name_);
  }
  parent_ = parent;
  changed(kOnParent);
}

void Entity::changed(unsigned reaction) {
  ++version_;
  notify(reaction);
  notify(kOnVersion);
}

KexType& Entity::NotifieeConst::fwkType() const { return _fwkType(); }

void Entity::NotifieeConst::react(unsigned reaction) {
  switch (reaction) {
    case kOnParent: return onParent();
    case kOnVersion: return onVersion();
    case kOnIsNondestructing: return onIsNondestructing();
    default: return;
  }
}

}  // namespace Kex
