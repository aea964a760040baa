// Ipmi::ProductInfoArea, the FRU product info area.
#include "host/ipmi/ProductInfoArea.h"

#include <utility>

#include "host/kex/base/Format.h"
#include "host/kex/type/KexType.h"

namespace Ipmi {

Kex::KexType& ProductInfoArea::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<ProductInfoArea>("Ipmi::ProductInfoArea", &PtrInterface::_fwkType());
  return record;
}

Kex::Ptr<ProductInfoArea> ProductInfoArea::ProductInfoAreaIs(Kex::Ptr<Hal::Buf> const& buffer) {
  return Kex::make<ProductInfoArea>(*buffer);
}

ProductInfoArea::ProductInfoArea(Hal::Buf const& buffer)
    : head_(firstBytes<kLanguage + 1>(buffer.bytes())),
      checksumOffset_(buffer.len() == 0 ? 0 : buffer.len() - 1),
      checksum_(buffer.len() == 0 ? Kex::U8{0} : buffer.bytes().back()),
      rightChecksum_(checksumOf(buffer.bytes().first(checksumOffset_))),
      checksumValid_(buffer.len() != 0 && checksum_ == rightChecksum_) {
  FieldCursor cursor(buffer.bytes().first(checksumOffset_), kLanguage + 1);
  for (AreaField& field : fields_) {
    cursor.read(field);
  }
  for (AreaField field; cursor.read(field);) {
    customFields_.push_back(std::move(field));
  }
}

std::optional<RecordFault> ProductInfoArea::fault() const {
  if (version() != 1) {
    return RecordFault{
        kVersion, Kex::format("the product info area has format version %u, not 1", version())};
  }
  if (checksumValid()) {
    return std::nullopt;
  }
  if (length() == 0) {
    return RecordFault{
        kLength, Kex::format("the product info area's length is %u bytes%s", head_[kLength] * 8U,
                             head_[kLength] == 0 ? "" : ", which wraps to 0")};
  }
  return RecordFault{
      checksumOffset_,
      Kex::format("the product info area's checksum is 0x%02X, where 0x%02X would be "
                  "right",
                  checksum_, rightChecksum_)};
}

Kex::KexType& ProductInfoArea::fwkType() const { return _fwkType(); }

ProductInfoArea::~ProductInfoArea() = default;

}  // namespace Ipmi
