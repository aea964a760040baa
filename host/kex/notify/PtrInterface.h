// Counted objects that can be observed, and the base of their observers.
#pragma once

#include <vector>

#include "host/kex/base/Name.h"
#include "host/kex/notify/Activity.h"
#include "host/kex/reference/Ptr.h"
#include "host/kex/reference/VFPtrInterface.h"

namespace Kex {

/// A counted object whose changes can be observed by reactors (notifiees).
class KEX_API PtrInterface : public VFPtrInterface {
 public:
  class NotifieeConst;

  static KexType& _fwkType();

  PtrInterface() = default;
  KexType& fwkType() const override;
  ~PtrInterface() override;

  /// What this object holds under `name`; null if nothing.
  virtual Ptr<PtrInterface> member(Name const& name) const;
  /// Names of all that `member` answers to, in a fixed order.
  virtual std::vector<Name> memberNames() const;
  /// The text of the object's place: the names from the root on, joined by `/` and escaped; empty
  /// for an object without a place.
  virtual String8 path() const;

  void isNondestructingIs(bool isNondestructing);
  /// Called when a request by name may have changed the object.
  virtual void handleOutsideChange() {}

  /// Numbers of the reactions that every observed object has. A type numbers its own from where
  /// its base ends; at most 32 in all.
  enum Reaction : unsigned { kOnParent, kOnVersion, kOnIsNondestructing, kReactionsEnd };

 protected:
  /// Queues `reaction` at each registered reactor; a reaction that is pending already is not
  /// queued twice.
  void notify(unsigned reaction) const;

 private:
  mutable NotifieeConst* firstNotifiee_ = nullptr;
};

/// Base of all reactors. A reactor that is registered (`isRegisteredNotifieeIs`) and attached
/// (`notifierIs` of the derived class), in whatever order, has its reaction hooks called from the
/// run loop after its notifier changed. It holds a reference to its notifier. It may delete itself
/// or drop its notifier from inside a reaction.
class KEX_API PtrInterface::NotifieeConst : public Activity, public PtrInterface {
 public:
  static KexType& _fwkType();

  NotifieeConst() = default;
  /// Off: no reaction runs, and those that are pending are forgotten.
  void hasNotificationActiveIs(bool active) override;
  KexType& fwkType() const override;
  ~NotifieeConst() override;

  bool isRegisteredNotifiee() const { return isRegistered_; }
  void isRegisteredNotifieeIs(bool isRegistered);

  /// On: the reactor is about to be let go, so its notifications go off; off takes that back.
  /// Nothing happens when it is so already.
  virtual void kexDoZombieReactors(bool on);

 protected:
  friend class PtrInterface;

  /// What `kexDoZombieReactors` was told last.
  bool isMarkedForDeletion() const { return isMarkedForDeletion_; }
  void isMarkedForDeletionIs(bool marked) { isMarkedForDeletion_ = marked; }

  Ptr<PtrInterface const> const& notifierPtr() const { return notifier_; }
  void notifierPtrIs(Ptr<PtrInterface const> const& notifier);
  /// Called while the reactor is being joined to, or parted from, its notifier.
  virtual void handleAttached(bool attached);
  /// Calls the hook of `reaction`.
  virtual void react(unsigned reaction);
  /// Makes `reaction` pending.
  void pendingIs(unsigned reaction);
  /// Forgets `reaction` if it is pending.
  void pendingDel(unsigned reaction);

 private:
  void run() final;
  void attachedIs(bool attached);

  Ptr<PtrInterface const> notifier_;
  NotifieeConst* nextNotifiee_ = nullptr;
  NotifieeConst* previousNotifiee_ = nullptr;
  U32 pending_ = 0;
  bool isRegistered_ = false;
  bool isAttached_ = false;
  bool isMarkedForDeletion_ = false;
};

}  // namespace Kex
