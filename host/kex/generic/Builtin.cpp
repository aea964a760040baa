// Records of the built-in value types.
#include "host/kex/generic/Builtin.h"

#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/ValueType.h"

namespace Kex {

template <>
KexType& Builtin<void*>::_fwkType() {
  static KexType& record = newPlainHostType("void", nullptr, 0);
  return record;
}

template <>
KexType& Builtin<bool>::_fwkType() {
  static KexType& record = newValueType<bool>("bool");
  return record;
}

template <>
KexType& Builtin<unsigned char>::_fwkType() {
  static KexType& record = newValueType<unsigned char>("U8");
  return record;
}

template <>
KexType& Builtin<unsigned int>::_fwkType() {
  static KexType& record = newValueType<unsigned int>("U32");
  return record;
}

template <>
KexType& Builtin<unsigned long long>::_fwkType() {
  static KexType& record = newValueType<unsigned long long>("U64");
  return record;
}

template <>
KexType& Builtin<double>::_fwkType() {
  static KexType& record = newValueType<double>("double");
  return record;
}

template <>
KexType& Builtin<String8>::_fwkType() {
  static KexType& record = newValueType<String8>("Kex::String8");
  return record;
}

template <>
KexType& Builtin<Name>::_fwkType() {
  static KexType& record = newValueType<Name>("Kex::Name");
  return record;
}

}  // namespace Kex
