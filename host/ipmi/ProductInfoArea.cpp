// Ipmi::ProductInfoArea, the FRU product info area.
#include "host/ipmi/ProductInfoArea.h"

#include <string>

#include "host/ipmi/CommonAreaHeader.h"
#include "host/kex/type/KexType.h"

namespace Ipmi {

namespace {

using Bytes = std::span<Kex::U8 const>;

constexpr std::size_t kLanguageOffset = 2;
constexpr std::size_t kFirstField = 3;
constexpr Kex::U8 kEndOfFields = 0xC1;

std::string bcdPlusText(Bytes bytes) {
  constexpr std::string_view kDigits = "0123456789 -.???";
  std::string text;
  for (Kex::U8 const byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0f];
  }
  return text;
}

/// Characters of six bits, 0x20 added, the first in the low bits of the first byte.
std::string sixBitText(Bytes bytes) {
  std::string text;
  for (std::size_t bit = 0; bit + 6 <= bytes.size() * 8; bit += 6) {
    unsigned const low = bytes[bit / 8];
    unsigned const high = bit / 8 + 1 < bytes.size() ? bytes[bit / 8 + 1] : 0U;
    text += static_cast<char>(0x20 + (((high << 8 | low) >> bit % 8) & 0x3f));
  }
  return text;
}

/// Reads fields one after the other; once a field overruns the area, or the end mark is met, there
/// is nothing more.
class FieldCursor {
 public:
  explicit FieldCursor(Bytes area) : area_(area) {}

  AreaField next() {
    if (isAtEnd_ || at_ >= area_.size() || area_[at_] == kEndOfFields) {
      isAtEnd_ = true;
      return {};
    }
    Kex::U8 const typeLength = area_[at_];
    std::size_t const length = typeLength & 0x3f;
    std::size_t const start = at_ + 1;
    if (length > area_.size() - start) {
      isAtEnd_ = true;
      return {};
    }
    at_ = start + length;
    auto const encoding = static_cast<FieldEncoding>(typeLength >> 6);
    return {.text = fieldText(encoding, area_.subspan(start, length)),
            .encoding = encoding,
            .offset = static_cast<Kex::U8>(start),
            .length = static_cast<Kex::U8>(length)};
  }

 private:
  Bytes area_;
  std::size_t at_ = kFirstField;
  bool isAtEnd_ = false;
};

}  // namespace

Kex::String8 fieldText(FieldEncoding encoding, Bytes bytes) {
  switch (encoding) {
    case FieldEncoding::bcdPlus: return Kex::String8(bcdPlusText(bytes));
    case FieldEncoding::sixBitAscii: return Kex::String8(sixBitText(bytes));
    case FieldEncoding::binary:
    case FieldEncoding::eightBit: break;
  }
  return Kex::String8(bytes);
}

Kex::KexType& ProductInfoArea::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<ProductInfoArea>("Ipmi::ProductInfoArea", &PtrInterface::_fwkType());
  return record;
}

Kex::Ptr<ProductInfoArea> ProductInfoArea::ProductInfoAreaIs(Kex::Ptr<Hal::Buf> const& buffer) {
  return Kex::make<ProductInfoArea>(*buffer);
}

ProductInfoArea::ProductInfoArea(Hal::Buf const& buffer)
    : checksumValid_(isZeroSum(buffer.bytes())) {
  // Offsets are one byte wide; an area never has more than 255 bytes, whatever the buffer has.
  Bytes const area = buffer.bytes().first(std::min<std::size_t>(buffer.len(), 255));
  if (area.size() > kLanguageOffset) {
    language_ = area[kLanguageOffset];
  }
  FieldCursor cursor(area);
  for (AreaField& field : fields_) {
    field = cursor.next();
  }
}

Kex::KexType& ProductInfoArea::fwkType() const { return _fwkType(); }

ProductInfoArea::~ProductInfoArea() = default;

}  // namespace Ipmi
