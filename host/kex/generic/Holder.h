// Holders of plain values, and what a value's record and text are.
#pragma once

#include <concepts>
#include <optional>
#include <type_traits>
#include <utility>

#include "host/kex/generic/Builtin.h"
#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/TextConversion.h"
#include "host/kex/type/KexType.h"

namespace Kex {

/// The record of the type of a value, an argument or a referenced object.
template <class T>
KexType& typeOf() {
  if constexpr (IsPtr<T>::value) {
    return typeOf<std::remove_const_t<typename T::Element>>();
  } else if constexpr (requires { T::_fwkType(); }) {
    return T::_fwkType();
  } else {
    return Builtin<T>::_fwkType();
  }
}

/// Holds one value.
template <class T>
class Holder final : public GenericIf {
 public:
  explicit Holder(T value) : Holder(std::move(value), typeOf<T>()) {}
  /// A value of the type that `record` stands for.
  Holder(T value, KexType const& record) : value_(std::move(value)), record_(record) {}

  T const& value() const { return value_; }
  KexType const& type() const override { return record_; }
  String8 text() const override { return valueToStrep(value_); }
  Ptr<PtrInterface> object() const override {
    if constexpr (IsPtr<T>::value) {
      // The generic interface has one kind of reference; constness is the adapter's to mind.
      return Ptr<PtrInterface>(const_cast<std::remove_const_t<typename T::Element>*>(value_.ptr()));
    } else {
      return {};
    }
  }
  Ptr<PtrInterface> castTo(KexType const& wanted) const override {
    Ptr<PtrInterface> const held = object();
    return held ? KexType::genericIf(held, false)->castTo(wanted) : GenericIf::castTo(wanted);
  }

 private:
  T value_;
  KexType const& record_;
};

template <class T>
Ptr<GenericIf> holderOf(T value) {
  return Ptr<GenericIf>(make<Holder<T>>(std::move(value)));
}

/// The number that `from` holds, if it holds one.
KEX_API std::optional<U64> heldNumber(GenericIf const& from);

/// `from` as a `T`: a value of that very type, a number within its range, a text for a name, an
/// object (or null reference) for a reference. Empty where it does not convert.
template <class T>
std::optional<T> convertTo(GenericIf const* from) {
  if (from == nullptr) {
    return std::nullopt;
  }
  if constexpr (IsPtr<T>::value) {
    using Object = std::remove_const_t<typename T::Element>;
    Ptr<PtrInterface> const object = from->object();
    if (object) {
      Ptr<Object> const cast = dynamicCast<Object>(object);
      return cast ? std::optional<T>(cast) : std::nullopt;
    }
    return from->type().isA(typeOf<T>()) ? std::optional<T>(T()) : std::nullopt;
  } else {
    if (auto const* const holder = dynamic_cast<Holder<T> const*>(from)) {
      return holder->value();
    }
    if constexpr (std::same_as<T, Name>) {
      auto const* const text = dynamic_cast<Holder<String8> const*>(from);
      return text != nullptr ? std::optional<Name>(Name(text->value())) : std::nullopt;
    } else if constexpr (std::unsigned_integral<T> && !std::same_as<T, bool>) {
      std::optional<U64> const number = heldNumber(*from);
      return number && std::in_range<T>(*number) ? std::optional<T>(static_cast<T>(*number))
                                                 : std::nullopt;
    } else {
      return std::nullopt;
    }
  }
}

}  // namespace Kex
