// The typed half of a reactor class: constructors and notifier of the right type.
#pragma once

#include "host/kex/notify/PtrInterface.h"

namespace Kex {

/// Base of `T::NotifieeConst`; `Base` is the reactor class of T's base type.
template <class T, class Base>
class NotifieeConstOf : public Base {
 public:
  NotifieeConstOf() = default;
  /// Registers the reactor and attaches it to `notifier`.
  explicit NotifieeConstOf(Ptr<T const> const& notifier) {
    this->isRegisteredNotifieeIs(true);
    notifierIs(notifier);
  }

  Ptr<T const> notifier() const {
    return Ptr<T const>(static_cast<T const*>(this->notifierPtr().ptr()));
  }
  void notifierIs(Ptr<T const> const& notifier) { this->notifierPtrIs(notifier); }
};

/// Base of `T::Notifiee`, the reactor that may change what it observes; `Base` is
/// `T::NotifieeConst`.
template <class T, class Base>
class NotifieeOf : public Base {
 public:
  NotifieeOf() = default;
  explicit NotifieeOf(Ptr<T> const& notifier) : Base(Ptr<T const>(notifier)) {}

  Ptr<T> notifier() const {
    // Only a mutable reference is ever attached through this class.
    return Ptr<T>(const_cast<T*>(static_cast<T const*>(this->notifierPtr().ptr())));
  }
  void notifierIs(Ptr<T> const& notifier) { this->notifierPtrIs(notifier); }
};

}  // namespace Kex
