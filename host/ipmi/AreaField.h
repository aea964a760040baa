// The fields of a FRU area, one after the other.
#pragma once

#include <span>

#include "host/kex/base/String8.h"

namespace Ipmi {

/// How the bytes of a FRU field stand for its text (type/length byte, bits 6 and 7).
enum class FieldEncoding : Kex::U8 { binary = 0, bcdPlus = 1, sixBitAscii = 2, eightBit = 3 };

/// The encoding's name for a person.
KEX_API char const* encodingName(FieldEncoding encoding);

/// One field of an area.
struct AreaField {
  /// BCD plus and 6-bit ASCII expanded; 8-bit and binary as the bytes stand.
  Kex::String8 text;
  FieldEncoding encoding = FieldEncoding::binary;
  /// Start of the stored bytes from the start of the area; 0 for a field that is not there.
  Kex::U8 offset = 0;
  /// Number of stored bytes.
  Kex::U8 length = 0;

  bool operator==(AreaField const&) const = default;
};

/// Reads the fields of an area in their order. Nothing is read past the area: once a field overruns
/// it, or the end mark `0xC1` is met, there is nothing more.
class KEX_API FieldCursor {
 public:
  /// `area` is an area without its checksum, of which at most 255 bytes are read: offsets are one
  /// byte wide. Its first field begins at `start`.
  FieldCursor(std::span<Kex::U8 const> area, std::size_t start);

  /// Reads the next field; false when there is none.
  bool read(AreaField& field);
  /// Where the end mark stands; 0 before it was met, or when there is none.
  std::size_t endMark() const { return endMark_; }

 private:
  std::span<Kex::U8 const> area_;
  std::size_t at_;
  std::size_t endMark_ = 0;
};

}  // namespace Ipmi
