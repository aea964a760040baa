// Ipmi::ProductInfoArea, the FRU product info area.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "host/hal/Buf.h"
#include "host/ipmi/AreaField.h"
#include "host/ipmi/Record.h"

namespace Ipmi {

/// A product info area (IPMI Platform Management FRU Information Storage Definition, section 12).
/// Nothing is read past the buffer, whose last byte is the checksum: a field that reaches into it
/// is empty with offset and length 0, and so are all after it. `0xC1` ends the fields. Bytes that
/// the buffer does not have read as 0.
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
  /// What the fields are called.
  static constexpr std::array<char const*, kFields> kFieldNames = {
      "manufacturer name", "product name", "part number", "product version",
      "serial number",     "asset tag",    "FRU file ID"};
  /// Where an area's version, length and language stand, in bytes.
  enum Offset : Kex::U8 { kVersion, kLength, kLanguage };
  /// Length of an area's header, its version and length, in bytes.
  static constexpr Kex::U8 kHeaderLength = 2;

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
  /// Of its stored bytes, from the start of the area; 0 where there is none.
  Kex::U8 serialNumberOffset() const { return field(kSerialNumber).offset; }
  /// Number of its stored bytes; 0 where there is none.
  Kex::U8 serialNumberLength() const { return field(kSerialNumber).length; }
  /// One field; of `kFields` there is none.
  AreaField const& field(Field which) const { return fields_[which]; }
  /// All of them, in their order.
  std::array<AreaField, kFields> const& fields() const { return fields_; }
  /// Fields that the maker added, from behind the last field to the end mark.
  std::vector<AreaField> const& customFields() const { return customFields_; }

  /// Whether all bytes of the area add up to 0 modulo 256; false when there are none.
  bool checksumValid() const { return checksumValid_; }
  /// The area's format version.
  Kex::U8 version() const { return head_[kVersion]; }
  /// The area's length in bytes as it stands in the area, one byte wide.
  Kex::U8 length() const { return static_cast<Kex::U8>(head_[kLength] * 8); }
  /// The IPMI language code; 0 is English.
  Kex::U8 language() const { return head_[kLanguage]; }
  /// What makes the area unacceptable: another version than 1, else a wrong checksum, which is told
  /// with the one that would be right, or a length of 0 bytes, for which there is none. None for an
  /// accepted area. Of an area's header alone the version can be judged.
  std::optional<RecordFault> fault() const;

 private:
  std::array<AreaField, kFields> fields_;
  std::vector<AreaField> customFields_;
  std::array<Kex::U8, kLanguage + 1> head_;
  /// The last byte's offset; 0 of an empty buffer.
  Kex::U32 checksumOffset_;
  /// As it is stored, and as it would be right.
  Kex::U8 checksum_;
  Kex::U8 rightChecksum_;
  bool checksumValid_;
};

}  // namespace Ipmi
