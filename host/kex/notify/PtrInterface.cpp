// Counted objects that can be observed, and the base of their observers.
#include "host/kex/notify/PtrInterface.h"

#include <bit>

#include "host/kex/base/Assert.h"

namespace Kex {

KexType& PtrInterface::fwkType() const { return _fwkType(); }

PtrInterface::~PtrInterface() {
  // Reactors hold their notifier, so only a notifier that was never counted can still have some.
  while (firstNotifiee_ != nullptr) {
    firstNotifiee_->attachedIs(false);
  }
}

Ptr<PtrInterface> PtrInterface::member(Name const&) const { return {}; }

std::vector<Name> PtrInterface::memberNames() const { return {}; }

String8 PtrInterface::path() const { return {}; }

void PtrInterface::isNondestructingIs(bool isNondestructing) {
  if (isNondestructing_ != isNondestructing) {
    isNondestructing_ = isNondestructing;
    notify(kOnIsNondestructing);
  }
}

void PtrInterface::notify(unsigned reaction) const {
  for (NotifieeConst* reactor = firstNotifiee_; reactor != nullptr;
       reactor = reactor->nextNotifiee_) {
    reactor->pendingIs(reaction);
  }
}

void PtrInterface::NotifieeConst::hasNotificationActiveIs(bool active) {
  Activity::hasNotificationActiveIs(active);
  if (!active) {
    pending_ = 0;
  }
}

void PtrInterface::NotifieeConst::kexDoZombieReactors(bool on) {
  if (isMarkedForDeletion_ == on) {
    return;
  }
  isMarkedForDeletion_ = on;
  if (notifier_) {
    hasNotificationActiveIs(!on);
  }
}

KexType& PtrInterface::NotifieeConst::fwkType() const { return _fwkType(); }

PtrInterface::NotifieeConst::~NotifieeConst() { attachedIs(false); }

void PtrInterface::NotifieeConst::isRegisteredNotifieeIs(bool isRegistered) {
  isRegistered_ = isRegistered;
  attachedIs(isRegistered_ && notifier_);
}

void PtrInterface::NotifieeConst::notifierPtrIs(Ptr<PtrInterface const> const& notifier) {
  if (notifier_ == notifier) {
    return;
  }
  attachedIs(false);
  // Let go at the very end: the last reference to the old notifier may be what holds this reactor.
  Ptr<PtrInterface const> const old = std::exchange(notifier_, notifier);
  attachedIs(isRegistered_ && notifier_);
}

void PtrInterface::NotifieeConst::handleAttached(bool) {}

void PtrInterface::NotifieeConst::react(unsigned) {}

void PtrInterface::NotifieeConst::pendingIs(unsigned reaction) {
  assertThat(reaction < 32, "reaction < 32");
  if (hasNotificationActive()) {
    pending_ |= U32{1} << reaction;
    enqueue();
  }
}

void PtrInterface::NotifieeConst::pendingDel(unsigned reaction) {
  pending_ &= ~(U32{1} << reaction);
  if (pending_ == 0) {
    dequeue();
  }
}

void PtrInterface::NotifieeConst::run() {
  auto const reaction = static_cast<unsigned>(std::countr_zero(pending_));
  pending_ &= pending_ - 1;
  if (pending_ != 0) {
    enqueue();
  }
  react(reaction);
}

void PtrInterface::NotifieeConst::attachedIs(bool attached) {
  if (isAttached_ == attached) {
    return;
  }
  isAttached_ = attached;
  NotifieeConst*& first = notifier_.ptr()->firstNotifiee_;
  if (attached) {
    nextNotifiee_ = first;
    if (first != nullptr) {
      first->previousNotifiee_ = this;
    }
    first = this;
  } else {
    (previousNotifiee_ != nullptr ? previousNotifiee_->nextNotifiee_ : first) = nextNotifiee_;
    if (nextNotifiee_ != nullptr) {
      nextNotifiee_->previousNotifiee_ = previousNotifiee_;
    }
    nextNotifiee_ = previousNotifiee_ = nullptr;
    pending_ = 0;
    dequeue();
  }
  handleAttached(attached);
}

}  // namespace Kex
