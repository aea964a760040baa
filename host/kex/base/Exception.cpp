// The framework's exceptions: programming errors and refused requests, never outcomes of a bus.
#include "host/kex/base/Exception.h"

#include <utility>

namespace Kex {

Exception::Exception(String8 text, U32 id, bool isUserError)
    : text_(std::move(text)), id_(id), isUserError_(isUserError) {}

Exception::~Exception() = default;
RangeException::~RangeException() = default;

char const* Exception::kind() const {
  switch (id_) {
    case kRange: return "range";
    case kType: return "type";
    case kConst: return "const";
    case kOpNotSupported: return "operation not supported";
    case kUnknownArg: return "unknown argument";
    case kBadIndexAttr: return "index";
    case kConversion: return "conversion";
    default: return "framework";
  }
}

void throwRangeException(String8 const& text) { throw RangeException(text); }

}  // namespace Kex
