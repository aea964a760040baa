// Records of the built-in value types.
#pragma once

#include "host/kex/type/KexType.h"

namespace Kex {

/// Whether a type is a `Ptr`.
template <class T>
struct IsPtr : std::false_type {};
/// See `IsPtr`.
template <class T>
struct IsPtr<Ptr<T>> : std::true_type {};

/// The record of the built-in value type `T`. `void` is `Builtin<void*>`.
template <class T>
struct Builtin {
  KEX_API static KexType& _fwkType();
};

template <>
KEX_API KexType& Builtin<void*>::_fwkType();
template <>
KEX_API KexType& Builtin<bool>::_fwkType();
template <>
KEX_API KexType& Builtin<unsigned char>::_fwkType();
template <>
KEX_API KexType& Builtin<unsigned int>::_fwkType();
template <>
KEX_API KexType& Builtin<unsigned long long>::_fwkType();
template <>
KEX_API KexType& Builtin<double>::_fwkType();
template <>
KEX_API KexType& Builtin<String8>::_fwkType();
template <>
KEX_API KexType& Builtin<Name>::_fwkType();

}  // namespace Kex
