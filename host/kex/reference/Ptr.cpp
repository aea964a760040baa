// What a null reference answers when it is dereferenced.
#include "host/kex/reference/Ptr.h"

#include "host/kex/base/Exception.h"

namespace Kex {

void throwNullPtr() { throwRangeException("null ValidPtr"); }

}  // namespace Kex
