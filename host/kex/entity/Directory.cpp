// An entity that holds other entities by name, and the root of the tree.
#include "host/kex/entity/Directory.h"

#include "host/kex/base/Exception.h"
#include "host/kex/base/Format.h"

namespace Kex {

namespace {

/// The one directory whose path does not come from its name.
struct Root final : Directory {
  Root() : Directory("") {}
  String8 path() const override { return "/"; }
};

}  // namespace

KexType& Directory::fwkType() const { return _fwkType(); }

Directory::~Directory() {
  for (auto const& [name, entity] : members_) {
    entity->parentIs(nullptr);
  }
}

Ptr<Entity> Directory::entity(Name const& name) const {
  auto const found = members_.find(name);
  return found == members_.end() ? Ptr<Entity>() : found->second;
}

std::vector<Name> Directory::memberNames() const {
  std::vector<Name> names;
  names.reserve(members_.size());
  for (auto const& [name, entity] : members_) {
    names.push_back(name);
  }
  return names;
}

void Directory::memberIs(Ptr<Entity> const& entity) {
  if (entity->name().str().empty()) {
    throwRangeException("an entity without a name cannot be a member");
  }
  for (Entity const* holder = this; holder != nullptr; holder = holder->parent()) {
    if (holder == entity.ptr()) {
      throwRangeException(format("%s cannot be a member of %s: it would hold itself",
                                 entity->path().charPtr(), path().charPtr()));
    }
  }
  if (member(entity->name()) == entity) {
    return;
  }
  memberDel(entity->name());
  members_[entity->name()] = entity;
  entity->parentIs(this);
}

Ptr<Entity> Directory::memberDel(Name const& name) {
  auto const found = members_.find(name);
  if (found == members_.end()) {
    return {};
  }
  Ptr<Entity> removed = found->second;
  members_.erase(found);
  removed->parentIs(nullptr);
  return removed;
}

Directory& root() {
  // Never destroyed: entities may refer to it until the process ends.
  static Ptr<Directory> const& theRoot = *new Ptr<Directory>(make<Root>());
  return *theRoot;
}

}  // namespace Kex
