// Named objects with a place in the tree of entities.
#pragma once

#include "host/kex/base/Name.h"
#include "host/kex/notify/Notifiee.h"
#include "host/kex/notify/PtrInterface.h"

namespace Kex {

/// An object with a name, observed by reactors, usually a member of a parent entity.
class KEX_API Entity : public PtrInterface {
 public:
  class NotifieeConst;
  class Notifiee;

  static KexType& _fwkType();

  /// Whether the singleton of this name exists.
  static bool singletonExists(Name const& name);
  /// The singleton of `type`: the member of the root that bears the type's full name, made by the
  /// type's generic construction if it does not exist yet. Throws a type exception for a type whose
  /// objects cannot be made from a name alone, a range exception for one that is no entity's.
  static Ptr<Entity> singletonIs(KexType const& type);
  /// Null when what stands under that name is no `T`.
  template <class T>
  static Ptr<T> singleton() {
    return dynamicCast<T>(singletonIs(T::_fwkType()));
  }

  explicit Entity(Name name) : name_(std::move(name)) {}
  KexType& fwkType() const override;
  ~Entity() override;

  /// The text of the attribute's value for a person; "unknown" for an identifier that the type
  /// does not have.
  virtual String8 attributeString(AttributeId id) const;

  String8 path() const override;

  Name const& name() const { return name_; }
  /// The entity whose member this is; null for none. Not owned.
  Entity* parent() const { return parent_; }
  /// Set by the parent when it has taken the entity in or let it go. A parent that still holds the
  /// entity loses it to the new one.
  void parentIs(Entity* parent);
  /// Lets the member of this name go; null if there was none.
  virtual Ptr<Entity> memberDel(Name const& name);
  /// Counts the changes of the entity's attributes.
  U32 version() const { return version_; }

 protected:
  /// A changed attribute: raises the version and queues its reaction and `onVersion`.
  void changed(unsigned reaction);

 private:
  Name name_;
  Entity* parent_ = nullptr;
  U32 version_ = 0;
};

/// Reacts to changes that every entity has.
class KEX_API Entity::NotifieeConst : public NotifieeConstOf<Entity, PtrInterface::NotifieeConst> {
 public:
  using NotifieeConstOf::NotifieeConstOf;

  static KexType& _fwkType();
  KexType& fwkType() const override;

 protected:
  virtual void onParent() {}
  virtual void onVersion() {}
  virtual void onIsNondestructing() {}
  void react(unsigned reaction) override;
};

/// The same, for reactors that change what they observe.
class KEX_API Entity::Notifiee : public NotifieeOf<Entity, Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
};

}  // namespace Kex
