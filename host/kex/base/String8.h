// Kex::String8, the framework's byte string.
#pragma once

#include <compare>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>

#include "host/kex/base/Export.h"
#include "host/kex/base/Types.h"

namespace Kex {

/// A string of bytes, NUL included where one was put in by length. Positions and lengths are in
/// bytes.
class KEX_API String8 {
 public:
  /// "no such position".
  static constexpr U32 npos = 0xFFFFFFFF;

  String8() = default;
  /// The text up to its NUL; a null pointer gives the empty string.
  String8(char const* text) : bytes_(text == nullptr ? "" : text) {}
  explicit String8(std::string_view bytes) : bytes_(bytes) {}
  explicit String8(std::string&& bytes) : bytes_(std::move(bytes)) {}
  explicit String8(std::span<U8 const> bytes)
      : bytes_(reinterpret_cast<char const*>(bytes.data()), bytes.size()) {}

  /// The bytes, ended by a NUL.
  char const* charPtr() const noexcept { return bytes_.c_str(); }
  /// The bytes, as long as the string is not changed.
  std::string_view view() const noexcept { return bytes_; }
  /// In bytes.
  U32 len() const noexcept { return static_cast<U32>(bytes_.size()); }
  bool empty() const noexcept { return bytes_.empty(); }

  /// At most `length` bytes from `position` on; empty when `position` is beyond the end.
  String8 substr(U32 position, U32 length = npos) const;
  /// First position from `start` whose byte is not in `set`, else `npos`.
  U32 posOfNot(U32 start, String8 const& set) const;
  /// Last position up to `start` (`npos`: the end) whose byte is not in `set`, else `npos`.
  U32 lastPosOfNot(U32 start, String8 const& set) const;

  /// FNV-1a of the bytes: the same in every run and build.
  U32 hash() const noexcept;

  bool operator==(String8 const& other) const = default;
  /// A null pointer stands for the empty string.
  bool operator==(char const* other) const { return bytes_ == (other == nullptr ? "" : other); }
  auto operator<=>(String8 const& other) const = default;

 private:
  std::string bytes_;
};

KEX_API std::ostream& operator<<(std::ostream& out, String8 const& text);

}  // namespace Kex
