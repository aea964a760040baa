// What a null reference answers when it is dereferenced.
#include "host/kex/Ptr.h"

#include "host/kex/Exception.h"

namespace Kex {

void throwNullPtr() { throwRangeException("null ValidPtr"); }

}  // namespace Kex
