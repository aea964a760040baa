// Kex::FileDescriptor, a file descriptor as the value of an attribute.
#include "host/kex/entity/FileDescriptor.h"

namespace Kex {

KexType& FileDescriptor::fwkType() const { return _fwkType(); }

FileDescriptor::~FileDescriptor() = default;

}  // namespace Kex
