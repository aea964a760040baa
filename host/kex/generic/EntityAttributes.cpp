// The attributes that every entity has: their schema, and how requests to them are answered.
#include <algorithm>

#include "host/kex/entity/Entity.h"
#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/Holder.h"

namespace Kex {

namespace {

/// One attribute; all of them are read only.
struct EntityAttribute {
  char const* name;
  AttributeId id;
  KexType& (*type)();
  Ptr<GenericIf> (*read)(Entity const& entity);
};

constexpr EntityAttribute kAttributes[] = {
    {.name = "name",
     .id = 0x1,
     .type = &typeOf<Name>,
     .read = [](Entity const& entity) { return holderOf(entity.name()); }},
    {.name = "parent",
     .id = 0x2,
     .type = &typeOf<Entity>,
     .read = [](Entity const& entity) { return holderOf(Ptr<Entity>(entity.parent())); }},
    {.name = "version",
     .id = 0x3,
     .type = &typeOf<U32>,
     .read = [](Entity const& entity) { return holderOf(entity.version()); }},
    {.name = "isNondestructing",
     .id = 0x4,
     .type = &typeOf<bool>,
     .read = [](Entity const& entity) { return holderOf(entity.isNondestructing()); }},
};

class EntityType final : public KexType {
 public:
  EntityType() : KexType("Entity", nullptr, &PtrInterface::_fwkType(), TypeFlags{}) {
    sizeIs(sizeof(Entity));
    isEntityIs(true);
    hasGenericIfSupportIs(true);
    constructorArgNameQEnq("name");
    constructorArgTypeQEnq("Kex::Name");
  }
  Ptr<GenericIf> newAdapter(Ptr<PtrInterface> const& object, bool isConst) const override {
    return make<GenericIfEntity>(object, isConst);
  }

 private:
  void declareAttributes() override {
    for (EntityAttribute const& attribute : kAttributes) {
      defNoninstantiatingAttr(attribute.name, attribute.type(), nullptr, {0x220001, 0x400},
                              KexAttrIntrospectionFlags(0), attribute.id);
    }
  }
};

}  // namespace

KexType& Entity::_fwkType() {
  static KexType& record = enterHostType(make<EntityType>(), "Kex::Entity");
  return record;
}

KexType const& GenericIfEntity::type() const { return Entity::_fwkType(); }

Ptr<GenericIf> GenericIfEntity::doAccess(AttributeRequest const& request) const {
  if (request.code >= kWrite && isConst()) {
    throwConstException("attempting to modify a const instance");
  }
  auto const* const found = std::ranges::find(kAttributes, request.id, &EntityAttribute::id);
  if (found == std::end(kAttributes)) {
    return baseGenericIf(Entity::_fwkType())->doAccess(request);
  }
  if (request.index != nullptr) {
    throwBadIndexAttrException(found->name);
  }
  if (request.code != kRead) {
    throwOpNotSupportedException(found->name, request.code, false);
  }
  return found->read(dynamic_cast<Entity const&>(*object()));
}

}  // namespace Kex
