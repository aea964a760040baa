// Ipmi::ProductInfoArea, the FRU product info area.
#pragma once

#include <array>
#include <span>

#include "host/hal/Buf.h"

namespace Ipmi {

/// How the bytes of a FRU field stand for its text (type/length byte, bits 6 and 7).
enum class FieldEncoding : Kex::U8 { binary = 0, bcdPlus = 1, sixBitAscii = 2, eightBit = 3 };

/// One field of an area.
struct AreaField {
  /// BCD plus and 6-bit ASCII expanded; 8-bit and binary as the bytes stand.
  Kex::String8 text;
  FieldEncoding encoding = FieldEncoding::binary;
  /// Start of the stored bytes from the start of the area; 0 for a field that is not there.
  Kex::U8 offset = 0;
  /// Number of stored bytes.
  Kex::U8 length = 0;
};

/// A product info area (IPMI Platform Management FRU Information Storage Definition, section 12).
/// Nothing is read past the buffer: a field that overruns it is empty with offset and length 0, and
/// so are all after it. `0xC1` ends the fields.
class KEX_API ProductInfoArea final : public Kex::PtrInterface {
 public:
  /// The fields that every area has, in their order.
  enum Field : Kex::U8 {
    kManufacturerName,
    kProductName,
    kPartNumber,
    kProductVersion,
    kSerialNumber,
    kAssetTag,
    kFruFileId,
    kFields
  };

  static Kex::KexType& _fwkType();
  /// The record of what `buffer` holds now.
  static Kex::Ptr<ProductInfoArea> ProductInfoAreaIs(Kex::Ptr<Hal::Buf> const& buffer);

  explicit ProductInfoArea(Hal::Buf const& buffer);
  Kex::KexType& fwkType() const override;
  ~ProductInfoArea() override;

  Kex::String8 const& manufacturerName() const { return field(kManufacturerName).text; }
  Kex::String8 const& productName() const { return field(kProductName).text; }
  Kex::String8 const& partNumber() const { return field(kPartNumber).text; }
  Kex::String8 const& productVersion() const { return field(kProductVersion).text; }
  Kex::String8 const& serialNumber() const { return field(kSerialNumber).text; }
  Kex::U8 serialNumberOffset() const { return field(kSerialNumber).offset; }
  Kex::U8 serialNumberLength() const { return field(kSerialNumber).length; }
  /// One field; of `kFields` there is none.
  AreaField const& field(Field which) const { return fields_[which]; }

  /// Whether all bytes of the area add up to 0 modulo 256; false when there are none.
  bool checksumValid() const { return checksumValid_; }
  /// The IPMI language code; 0 is English.
  Kex::U8 language() const { return language_; }

 private:
  std::array<AreaField, kFields> fields_;
  bool checksumValid_;
  Kex::U8 language_ = 0;
};

/// The text that `bytes` stand for in `encoding`. BCD digits that mean nothing are shown as `?`.
KEX_API Kex::String8 fieldText(FieldEncoding encoding, std::span<Kex::U8 const> bytes);

}  // namespace Ipmi
