// Members that an object holds by fixed names, and that have their place there.
#pragma once

#include <utility>
#include <vector>

#include "host/kex/entity/Place.h"

namespace Kex {

class Owned;

/// What one object holds by fixed names.
class KEX_API NamedMembers {
 public:
  template <class T>
  class Member;

  /// `owner` outlives this.
  explicit NamedMembers(PtrInterface const& owner) : owner_(owner) {}
  NamedMembers(NamedMembers const&) = delete;
  NamedMembers& operator=(NamedMembers const&) = delete;

  /// The member of this name; null if there is none at present.
  Ptr<PtrInterface> member(Name const& name) const;
  /// Names of all members that there are at present, in the order in which they were declared.
  std::vector<Name> names() const;

 private:
  /// Where one member is held.
  class KEX_API Slot {
   public:
    Slot(NamedMembers& members, char const* name);
    Slot(Slot const&) = delete;
    Slot& operator=(Slot const&) = delete;
    virtual Owned* object() const = 0;
    char const* name() const { return name_; }
    /// The one that was declared next; null for none.
    Slot const* next() const { return next_; }
    /// Where what is held here has its place.
    Place place() const { return {&members_.owner_, name_}; }

   protected:
    ~Slot();
    /// Tells `object` that it is held here, or not any more.
    void heldIs(Owned* object, bool isHeld) const;

   private:
    NamedMembers& members_;
    char const* name_;
    Slot* next_ = nullptr;
  };

  friend class Owned;
  PtrInterface const& owner_;
  /// They stand in the owner itself, and form a chain.
  Slot* firstSlot_ = nullptr;
};

/// A counted object that is no entity: it is named by its owner and its name there.
class KEX_API Owned : public PtrInterface {
 public:
  ~Owned() override;
  String8 path() const override;

 private:
  friend class NamedMembers;
  /// Where it is held; null for nowhere.
  NamedMembers::Slot const* slot_ = nullptr;
};

/// A reference to a member, which has its place there as long as it is held. `T` is an `Owned`.
template <class T>
class NamedMembers::Member final : Slot {
 public:
  /// Declares `name`, which is kept and not copied, after those that `members` has; null as yet.
  Member(NamedMembers& members, char const* name) : Slot(members, name) {}
  Member(Member const&) = delete;
  Member& operator=(Member const&) = delete;
  ~Member() { ptrIs({}); }

  Ptr<T> const& ptr() const { return ptr_; }
  /// Holds `object` from now on, null for nothing; returns what was held before.
  Ptr<T> ptrIs(Ptr<T> object) {
    Ptr<T> before = std::exchange(ptr_, std::move(object));
    heldIs(before.ptr(), false);
    heldIs(ptr_.ptr(), true);
    return before;
  }

 private:
  Owned* object() const override { return ptr_.ptr(); }

  Ptr<T> ptr_;
};

}  // namespace Kex
