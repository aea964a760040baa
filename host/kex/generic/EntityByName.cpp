// What entities are asked by name: their attributes' texts, and the singletons of types.
#include "host/kex/base/Format.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/Holder.h"

namespace Kex {

bool Entity::singletonExists(Name const& name) { return root().member(name) != nullptr; }

Ptr<Entity> Entity::singletonIs(KexType const& type) {
  Name const& name = type.nodeName();
  if (Ptr<Entity> found = root().entity(name)) {
    return found;
  }
  auto const arguments = make<GenericIf::List_>();
  arguments->append(holderOf(name));
  Ptr<Entity> entity = dynamicCast<Entity>(type.genericIf(arguments.ptr(), false)->object());
  if (!entity) {
    throwRangeException(format("%s is no type of entities", name.charPtr()));
  }
  root().memberIs(entity);
  return entity;
}

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
  // Asked of the object's own adapter, so that a type's attributes are listed once.
  auto const adapter = KexType::genericIf(Ptr<PtrInterface>(const_cast<Entity*>(this)), true);
  Ptr<GenericIf> const value = adapter->access({.id = id});
  return value ? value->text() : String8();
}

}  // namespace Kex
