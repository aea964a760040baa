// Kex::String8, the framework's byte string.
#include "host/kex/base/String8.h"

#include <algorithm>
#include <ostream>

namespace Kex {

namespace {

U32 position(std::size_t found) {
  return found == std::string::npos ? String8::npos : static_cast<U32>(found);
}

}  // namespace

String8::String8(std::string_view bytes) : len_(static_cast<U32>(bytes.size())) {
  if (bytes.size() < kShort) {
    std::ranges::copy(bytes, short_.begin());
    return;
  }
  auto const copy = std::make_shared_for_overwrite<char[]>(bytes.size() + 1);
  *std::ranges::copy(bytes, copy.get()).out = '\0';
  long_ = copy;
}

String8 String8::substr(U32 position, U32 length) const {
  return position >= len() ? String8() : String8(view().substr(position, length));
}

U32 String8::posOfNot(U32 start, String8 const& set) const {
  return position(view().find_first_not_of(set.view(), start));
}

U32 String8::lastPosOfNot(U32 start, String8 const& set) const {
  return position(view().find_last_not_of(set.view(), start));
}

U32 String8::hash() const noexcept {
  U32 hash = 2166136261U;
  for (char const byte : view()) {
    hash = (hash ^ static_cast<U8>(byte)) * 16777619U;
  }
  return hash;
}

std::ostream& operator<<(std::ostream& out, String8 const& text) { return out << text.view(); }

}  // namespace Kex
