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

Count& countOf(char const* bytes) noexcept {
  return *std::launder(reinterpret_cast<Count*>(const_cast<char*>(bytes) - sizeof(Count)));
}

}  // namespace

String8::Shared String8::copied(std::string_view bytes) {
  void* const block = ::operator new(sizeof(Count) + bytes.size() + 1);
  new (block) Count(1);
  char* const copy = static_cast<char*>(block) + sizeof(Count);
  *std::ranges::copy(bytes, copy).out = '\0';
  return Shared(copy);
}

String8::Shared String8::shared() const noexcept {
  if (long_) {
    countOf(long_.get()).fetch_add(1, std::memory_order_relaxed);
  }
  return Shared(long_.get());
}

void String8::Release::operator()(char const* bytes) const noexcept {
  Count& count = countOf(bytes);
  if (count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    ::operator delete(&count);
  }
}

String8::String8(std::string_view bytes) : len_(static_cast<U32>(bytes.size())) {
  if (bytes.size() < kShort) {
    std::ranges::copy(bytes, short_.begin());
  } else {
    long_ = copied(bytes);
  }
}

String8::String8(String8 const& other)
    : long_(other.shared()), short_(other.short_), len_(other.len_) {}

String8::String8(String8&& other) noexcept
    : long_(std::move(other.long_)),
      short_(std::exchange(other.short_, {})),
      len_(std::exchange(other.len_, 0)) {}

String8& String8::operator=(String8 const& other) {
  long_ = other.shared();
  short_ = other.short_;
  len_ = other.len_;
  return *this;
}

String8& String8::operator=(String8&& other) noexcept {
  long_ = std::move(other.long_);
  short_ = std::exchange(other.short_, {});
  len_ = std::exchange(other.len_, 0);
  return *this;
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
