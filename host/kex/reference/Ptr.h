// Kex::Ptr, the counted reference through which every entity is held.
#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include "host/kex/base/Export.h"

namespace Kex {

/// Throws the range exception "null ValidPtr".
[[noreturn]] KEX_API void throwNullPtr();

/// Counted reference to a `VFPtrInterface`. A copy adds a reference, a release drops one.
/// Dereferencing a null reference throws the range exception "null ValidPtr".
template <class T>
class Ptr {
 public:
  using Element = T;

  constexpr Ptr() noexcept = default;
  constexpr Ptr(std::nullptr_t) noexcept {}
  Ptr(T* object) : object_(object) { add(); }
  Ptr(Ptr const& other) : object_(other.object_) { add(); }
  Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  /// A reference to a derived class's object is one to its base's.
  template <class U>
    requires std::is_convertible_v<U*, T*>
  Ptr(Ptr<U> const& other) : object_(other.ptr()) {
    add();
  }
  ~Ptr() { release(); }

  Ptr& operator=(Ptr other) noexcept {
    swap(other);
    return *this;
  }

  /// Exchanges what both refer to.
  void swap(Ptr& other) noexcept { std::swap(object_, other.object_); }

  /// The object, not held by what is returned; null for none.
  T* ptr() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  T* operator->() const { return checked(); }
  T& operator*() const { return *checked(); }

  template <class U>
  bool operator==(Ptr<U> const& other) const noexcept {
    return object_ == other.ptr();
  }
  bool operator==(std::nullptr_t) const noexcept { return object_ == nullptr; }

 private:
  T* checked() const {
    if (object_ == nullptr) {
      throwNullPtr();
    }
    return object_;
  }
  void add() const {
    if (object_ != nullptr) {
      object_->newRef();
    }
  }
  void release() {
    if (object_ != nullptr) {
      std::exchange(object_, nullptr)->deleteRef();
    }
  }

  T* object_ = nullptr;
};

/// A new `T`, held from the start.
template <class T, class... Arguments>
Ptr<T> make(Arguments&&... arguments) {
  return Ptr<T>(new T(std::forward<Arguments>(arguments)...));
}

/// The object as a `T`, or null when it is none.
template <class T, class U>
Ptr<T> dynamicCast(Ptr<U> const& object) {
  return Ptr<T>(dynamic_cast<T*>(object.ptr()));
}

}  // namespace Kex
