// An entity that holds other entities by name, and the root of the tree.
#include "host/kex/entity/Directory.h"

#include <string>

#include "host/kex/base/Exception.h"
#include "host/kex/generic/TextConversion.h"
#include "host/kex/type/KexType.h"

namespace Kex {

KexType& Directory::_fwkType() {
  static KexType& record = newHostType<Directory>("Kex::Directory", &Entity::_fwkType());
  return record;
}

KexType& Directory::fwkType() const { return _fwkType(); }

Directory::~Directory() {
  for (auto const& [name, entity] : members_) {
    entity->parentIs(nullptr);
  }
}

Ptr<PtrInterface> Directory::member(Name const& name) const {
  auto const found = members_.find(name);
  return found == members_.end() ? Ptr<PtrInterface>() : Ptr<PtrInterface>(found->second);
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
  static Ptr<Directory> const& theRoot = *new Ptr<Directory>(make<Directory>(Name("")));
  return *theRoot;
}

String8 memberPath(PtrInterface const& owner, Name const& name) {
  std::string text(owner.path().view());
  if (text != "/") {
    text += '/';
  }
  return String8(text + escapedName(name));
}

}  // namespace Kex
