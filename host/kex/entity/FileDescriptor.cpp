// Kex::FileDescriptor, a file descriptor as the value of an attribute.
#include "host/kex/entity/FileDescriptor.h"

#include "host/kex/type/KexType.h"

namespace Kex {

KexType& FileDescriptor::_fwkType() {
  static KexType& record = newHostType<FileDescriptor>("Kex::FileDescriptor", &Entity::_fwkType());
  return record;
}

KexType& FileDescriptor::fwkType() const { return _fwkType(); }

FileDescriptor::~FileDescriptor() = default;

}  // namespace Kex
