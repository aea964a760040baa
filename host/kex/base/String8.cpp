// Kex::String8, the framework's byte string.
#include "host/kex/base/String8.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <ostream>
#include <utility>

namespace Kex {

namespace {

U32 position(std::size_t found) {
  return found == std::string::npos ? String8::npos : static_cast<U32>(found);
}

/// Stands before bytes that strings share: how many do.
using Count = std::atomic<U32>;

Count& countOf(char const* text) noexcept {
  return *std::launder(reinterpret_cast<Count*>(const_cast<char*>(text) - sizeof(Count)));
}

/// A copy that one string has as yet.
char const* copyOf(std::string_view bytes) {
  void* const block = ::operator new(sizeof(Count) + bytes.size() + 1);
  new (block) Count(1);
  char* const copy = static_cast<char*>(block) + sizeof(Count);
  *std::ranges::copy(bytes, copy).out = '\0';
  return copy;
}

}  // namespace

String8::String8(std::string_view bytes) : String8() {
  if (bytes.size() <= kMostOwn) {
    bytes_.own.len = static_cast<U8>(bytes.size());
    std::ranges::copy(bytes, bytes_.own.text.begin());
  } else {
    bytes_.shared = {.mark = kShared, .len = static_cast<U32>(bytes.size()), .text = copyOf(bytes)};
  }
}

void String8::share() const noexcept {
  countOf(bytes_.shared.text).fetch_add(1, std::memory_order_relaxed);
}

void String8::release() const noexcept {
  Count& count = countOf(bytes_.shared.text);
  if (count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    ::operator delete(&count);
  }
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
