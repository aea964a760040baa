// What a product info area's length may have been meant to be.
#include "host/ipmi/LengthHint.h"

#include <algorithm>
#include <array>

#include "host/ipmi/ProductInfoArea.h"

namespace Ipmi {

namespace {

using Area = ProductInfoArea;
using Bytes = std::span<Kex::U8 const>;

constexpr std::size_t kUnit = 8;

/// Whether the field's text can be read, or is none.
bool isReadable(AreaField const& field) {
  return field.encoding != FieldEncoding::eightBit ||
         std::ranges::all_of(field.text.view(),
                             [](char letter) { return letter >= 0x20 && letter <= 0x7E; });
}

/// Where the end mark stands behind the fields that a recognition needs; 0 when there is none.
std::size_t endMarkOf(Bytes area) {
  FieldCursor cursor(area, Area::kLanguage + 1);
  std::size_t fields = 0;
  for (AreaField field; cursor.read(field); ++fields) {
    if (!isReadable(field)) {
      return 0;
    }
  }
  return fields > Area::kSerialNumber ? cursor.endMark() : 0;
}

/// From the product info area to the one that follows it, in units; 0 when none does.
std::size_t unitsToNext(CommonAreaHeader const& header) {
  std::size_t const own = header.bytes()[CommonAreaHeader::kProductArea];
  std::size_t least = 0;
  for (std::size_t at = 1; at < CommonAreaHeader::kChecksum - 1U; ++at) {
    std::size_t const start = header.bytes()[at];
    if (start > own && (least == 0 || start - own < least)) {
      least = start - own;
    }
  }
  return least;
}

/// Whether the first `units` of `area`, whose end mark stands at `mark`, are an area but for the
/// length that is stored in it.
bool isArea(Bytes area, std::size_t units, std::size_t mark) {
  std::size_t const length = units * kUnit;
  if (units * kUnit > 0xFF || length > area.size() || mark + 2 > length) {
    return false;
  }
  Bytes const filling = area.subspan(mark + 1, length - mark - 2);
  bool const isFilled =
      std::ranges::all_of(filling, [&](Kex::U8 byte) { return byte == filling.front(); });
  auto const sum = static_cast<Kex::U8>(-checksumOf(area.first(length)));
  // With the length that is suggested in place of the one that is stored.
  auto const corrected = static_cast<Kex::U8>(sum - area[Area::kLength] + units);
  return isFilled && (sum == 0 || corrected == 0);
}

}  // namespace

std::optional<Kex::U8> lengthHint(Bytes area, CommonAreaHeader const& header) {
  std::size_t const mark = endMarkOf(area);
  if (mark == 0 || area[Area::kVersion] != 1) {
    return std::nullopt;
  }
  for (std::size_t const units : {(mark + 1 + kUnit) / kUnit, unitsToNext(header)}) {
    if (units != area[Area::kLength] && isArea(area, units, mark)) {
      return static_cast<Kex::U8>(units);
    }
  }
  return std::nullopt;
}

}  // namespace Ipmi
