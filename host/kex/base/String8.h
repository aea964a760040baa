// Kex::String8, the framework's byte string.
#pragma once

#include <array>
#include <compare>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "host/kex/base/Export.h"
#include "host/kex/base/Types.h"

namespace Kex {

/// A string of bytes, NUL included where one was put in by length. Positions and lengths are in
/// bytes. Copies share long bytes, which never change.
class KEX_API String8 {
 public:
  /// "no such position".
  static constexpr U32 npos = 0xFFFFFFFF;

  String8() noexcept : bytes_{.own = {}} {}
  String8(String8 const& other) noexcept : bytes_(other.bytes_) {
    if (isShared()) {
      share();
    }
  }
  String8(String8&& other) noexcept : bytes_(std::exchange(other.bytes_, {.own = {}})) {}
  String8& operator=(String8 other) noexcept {
    std::swap(bytes_, other.bytes_);
    return *this;
  }
  ~String8() {
    if (isShared()) {
      release();
    }
  }
  /// The text up to its NUL; a null pointer gives the empty string.
  String8(char const* text) : String8(std::string_view(text == nullptr ? "" : text)) {}
  explicit String8(std::string_view bytes);
  explicit String8(std::span<U8 const> bytes)
      : String8(std::string_view(reinterpret_cast<char const*>(bytes.data()), bytes.size())) {}

  /// The bytes, ended by a NUL.
  char const* charPtr() const noexcept {
    return isShared() ? bytes_.shared.text : bytes_.own.text.data();
  }
  /// The bytes, as long as the string is not changed.
  std::string_view view() const noexcept { return {charPtr(), len()}; }
  /// In bytes.
  U32 len() const noexcept { return isShared() ? bytes_.shared.len : bytes_.own.len; }
  bool empty() const noexcept { return bytes_.own.len == 0; }

  /// At most `length` bytes from `position` on; empty when `position` is beyond the end.
  String8 substr(U32 position, U32 length = npos) const;
  /// First position from `start` whose byte is not in `set`, else `npos`.
  U32 posOfNot(U32 start, String8 const& set) const;
  /// Last position up to `start` (`npos`: the end) whose byte is not in `set`, else `npos`.
  U32 lastPosOfNot(U32 start, String8 const& set) const;

  /// FNV-1a of the bytes: the same in every run and build.
  U32 hash() const noexcept;

  bool operator==(String8 const& other) const { return view() == other.view(); }
  /// A null pointer stands for the empty string.
  bool operator==(char const* other) const { return view() == (other == nullptr ? "" : other); }
  auto operator<=>(String8 const& other) const { return view() <=> other.view(); }

 private:
  /// Texts up to this many bytes, their NUL aside, stand in the string itself.
  static constexpr std::size_t kMostOwn = 22;
  struct Own {
    U8 len = 0;
    std::array<char, kMostOwn + 1> text{};
  };
  /// Longer ones stand by themselves, with the count of those that share them in front.
  struct Shared {
    U8 mark;
    U32 len;
    char const* text;
  };
  /// What stands in place of the length of a string's own bytes where they are shared.
  static constexpr U8 kShared = 0xFF;
  union Bytes {
    Own own;
    Shared shared;
  };

  bool isShared() const noexcept { return bytes_.own.len == kShared; }
  void share() const noexcept;
  void release() const noexcept;

  Bytes bytes_;
};

KEX_API std::ostream& operator<<(std::ostream& out, String8 const& text);

}  // namespace Kex
