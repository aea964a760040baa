// Kex::String8, the framework's byte string.
#pragma once

#include <array>
#include <compare>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "host/kex/base/Export.h"
#include "host/kex/base/Types.h"

namespace Kex {

/// A string of bytes, NUL included where one was put in by length. Positions and lengths are in
/// bytes. Copies share long bytes, which never change.
class KEX_API String8 {
 public:
  /// "no such position".
  static constexpr U32 npos = 0xFFFFFFFF;

  String8() = default;
  String8(String8 const& other);
  String8(String8&& other) noexcept;
  String8& operator=(String8 const& other);
  String8& operator=(String8&& other) noexcept;
  ~String8() = default;
  /// The text up to its NUL; a null pointer gives the empty string.
  String8(char const* text) : String8(std::string_view(text == nullptr ? "" : text)) {}
  explicit String8(std::string_view bytes);
  explicit String8(std::span<U8 const> bytes)
      : String8(std::string_view(reinterpret_cast<char const*>(bytes.data()), bytes.size())) {}

  /// The bytes, ended by a NUL.
  char const* charPtr() const noexcept { return long_ ? long_.get() : short_.data(); }
  /// The bytes, as long as the string is not changed.
  std::string_view view() const noexcept { return {charPtr(), len_}; }
  /// In bytes.
  U32 len() const noexcept { return len_; }
  bool empty() const noexcept { return len_ == 0; }

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
  /// Bytes up to this many, their NUL included, are each string's own.
  static constexpr std::size_t kShort = 28;

  /// Gives up one string's part in bytes that several share.
  struct Release {
    KEX_API void operator()(char const* bytes) const noexcept;
  };
  using Shared = std::unique_ptr<char const[], Release>;
  static Shared copied(std::string_view bytes);
  Shared shared() const noexcept;

  Shared long_;
  std::array<char, kShort> short_{};
  U32 len_ = 0;
};

KEX_API std::ostream& operator<<(std::ostream& out, String8 const& text);

}  // namespace Kex
