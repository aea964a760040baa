// Named objects with a place in the tree of entities.
#include "host/kex/entity/Entity.h"

#include "host/kex/entity/Directory.h"
#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/TextConversion.h"
#include "host/kex/type/KexType.h"

namespace Kex {

bool Entity::singletonExists(Name const& name) { return root().member(name) != nullptr; }

Ptr<Entity> Entity::singletonIs(KexType const& type) {
  Name const name(type.fullName());
  if (Ptr<PtrInterface> const found = root().member(name)) {
    return dynamicCast<Entity>(found);
  }
  auto const arguments = make<GenericIf::List_>();
  arguments->append(holderOf(name));
  Ptr<Entity> entity = dynamicCast<Entity>(type.genericIf(arguments.ptr(), false)->object());
  root().memberIs(entity);
  return entity;
}

KexType& Entity::fwkType() const { return _fwkType(); }

Entity::~Entity() = default;

String8 Entity::attributeString(AttributeId id) const {
  // A type's own record may never have been declared; those of its host bases always are.
  KexAttr const* attribute = nullptr;
  for (KexType const* type = &fwkType(); type != nullptr && attribute == nullptr;
       type = type->base()) {
    attribute = type->attr(id);
  }
  if (attribute == nullptr || attribute->kind() != KexAttr::Kind::value) {
    return "unknown";
  }
  // Asked of the object's own adapter, so that a type's attributes are listed in one place.
  auto const adapter = KexType::genericIf(Ptr<PtrInterface>(const_cast<Entity*>(this)), true);
  Ptr<GenericIf> const value = adapter->access({.id = id});
  return value ? value->text() : String8();
}

String8 Entity::path() const {
  if (this == &root()) {
    return "/";
  }
  return parent_ == nullptr ? String8(escapedName(name_)) : memberPath(*parent_, name_);
}

void Entity::parentIs(Entity* parent) {
  if (parent_ != parent) {
    parent_ = parent;
    changed(kOnParent);
  }
}

void Entity::changed(unsigned reaction) {
  ++version_;
  notify(reaction);
  notify(kOnVersion);
}

KexType& Entity::NotifieeConst::_fwkType() {
  static KexType& record = newHostType<NotifieeConst>("Kex::Entity::NotifieeConst",
                                                      &PtrInterface::NotifieeConst::_fwkType());
  return record;
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
