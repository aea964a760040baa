// The fields of a FRU area, one after the other.
#include "host/ipmi/AreaField.h"

#include <algorithm>
#include <string>

namespace Ipmi {

namespace {

using Bytes = std::span<Kex::U8 const>;

constexpr Kex::U8 kEndOfFields = 0xC1;

Kex::String8 storedText(Bytes bytes) { return Kex::String8(bytes); }

Kex::String8 bcdPlusText(Bytes bytes) {
  constexpr std::string_view kDigits = "0123456789 -.???";
  std::string text;
  for (Kex::U8 const byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0f];
  }
  return Kex::String8(text);
}

/// Characters of six bits, 0x20 added, the first in the low bits of the first byte.
Kex::String8 sixBitText(Bytes bytes) {
  std::string text;
  for (std::size_t bit = 0; bit + 6 <= bytes.size() * 8; bit += 6) {
    unsigned const low = bytes[bit / 8];
    unsigned const high = bit / 8 + 1 < bytes.size() ? bytes[bit / 8 + 1] : 0U;
    text += static_cast<char>(0x20 + (((high << 8 | low) >> bit % 8) & 0x3f));
  }
  return Kex::String8(text);
}

/// A way in which a field's bytes stand for its text.
struct Encoding {
  char const* name;
  Kex::String8 (*text)(Bytes bytes);
};

/// In the order of `FieldEncoding`, which has no more than the two bits of it. BCD digits that mean
/// nothing are shown as `?`.
constexpr Encoding kEncodings[] = {
    {"binary", &storedText},
    {"BCD plus", &bcdPlusText},
    {"6-bit", &sixBitText},
    {"8-bit", &storedText},
};

Encoding const& encodingOf(FieldEncoding encoding) {
  return kEncodings[static_cast<Kex::U8>(encoding)];
}

}  // namespace

char const* encodingName(FieldEncoding encoding) { return encodingOf(encoding).name; }

FieldCursor::FieldCursor(Bytes area, std::size_t start)
    : area_(area.first(std::min<std::size_t>(area.size(), 255))), at_(start) {}

bool FieldCursor::read(AreaField& field) {
  if (at_ >= area_.size() || area_[at_] == kEndOfFields) {
    endMark_ = at_ < area_.size() ? at_ : endMark_;
    at_ = area_.size();
    return false;
  }
  Kex::U8 const typeLength = area_[at_];
  std::size_t const length = typeLength & 0x3f;
  std::size_t const start = at_ + 1;
  if (length > area_.size() - start) {
    at_ = area_.size();
    return false;
  }
  at_ = start + length;
  field.encoding = static_cast<FieldEncoding>(typeLength >> 6);
  field.text = encodingOf(field.encoding).text(area_.subspan(start, length));
  field.offset = static_cast<Kex::U8>(start);
  field.length = static_cast<Kex::U8>(length);
  return true;
}

}  // namespace Ipmi
