// Records of the framework's own types: the built-in values, and those of its objects that add no
// attributes.
#include "host/kex/entity/Directory.h"
#include "host/kex/entity/FileDescriptor.h"
#include "host/kex/generic/Builtin.h"
#include "host/kex/generic/ValueType.h"
#include "host/kex/time/Clock.h"

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

KexType& PtrInterface::_fwkType() {
  static KexType& record = newHostType<PtrInterface>("Kex::PtrInterface", nullptr);
  return record;
}

KexType& PtrInterface::NotifieeConst::_fwkType() {
  static KexType& record =
      newHostType<NotifieeConst>("Kex::PtrInterface::NotifieeConst", &PtrInterface::_fwkType());
  return record;
}

KexType& Entity::NotifieeConst::_fwkType() {
  static KexType& record = newHostType<NotifieeConst>("Kex::Entity::NotifieeConst",
                                                      &PtrInterface::NotifieeConst::_fwkType());
  return record;
}

KexType& Directory::_fwkType() {
  static KexType& record = newHostType<Directory>("Kex::Directory", &Entity::_fwkType());
  return record;
}

KexType& FileDescriptor::_fwkType() {
  static KexType& record = newHostType<FileDescriptor>("Kex::FileDescriptor", &Entity::_fwkType());
  return record;
}

KexType& Clock::_fwkType() {
  static KexType& record = newHostType<Clock>("Kex::Clock", &Entity::_fwkType());
  return record;
}

}  // namespace Kex
