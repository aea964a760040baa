// An entity that holds other entities by name, and the root of the tree.
#pragma once

#include <map>

#include "host/kex/entity/Entity.h"

namespace Kex {

/// Holds entities under their names.
class KEX_API Directory : public Entity {
 public:
  static KexType& _fwkType();

  explicit Directory(Name name) : Entity(std::move(name)) {}
  KexType& fwkType() const override;
  ~Directory() override;

  Ptr<PtrInterface> member(Name const& name) const override { return entity(name); }
  /// The member of this name; null for none.
  Ptr<Entity> entity(Name const& name) const;
  std::vector<Name> memberNames() const override;
  /// Takes `entity` in, out of the parent that it had and in place of one of the same name. Throws
  /// a range exception for one without a name, whose path would be that of the directory, and for
  /// the directory itself or one that holds it.
  void memberIs(Ptr<Entity> const& entity);
  Ptr<Entity> memberDel(Name const& name) override;

 private:
  std::map<Name, Ptr<Entity>> members_;
};

/// The root of the tree of entities.
KEX_API Directory& root();

}  // namespace Kex
