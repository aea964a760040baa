// Ipmi::CommonAreaHeader, the FRU common header.
#pragma once

#include <array>
#include <optional>

#include "host/hal/Buf.h"
#include "host/ipmi/Record.h"

namespace Ipmi {

/// A FRU common header (IPMI Platform Management FRU Information Storage Definition, section 8).
/// Bytes that the buffer does not have read as 0.
class KEX_API CommonAreaHeader final : public Kex::PtrInterface {
 public:
  /// Length of a common header in bytes.
  static constexpr Kex::U8 kLength = 8;
  /// Where its fields stand, in bytes.
  enum Field : Kex::U8 { kVersion = 0, kProductArea = 4, kChecksum = 7 };

  static Kex::KexType& _fwkType();
  /// The record of what `buffer` holds now.
  static Kex::Ptr<CommonAreaHeader> CommonAreaHeaderIs(Kex::Ptr<Hal::Buf> const& buffer);

  explicit CommonAreaHeader(Hal::Buf const& buffer);
  Kex::KexType& fwkType() const override;
  ~CommonAreaHeader() override;

  /// Whether the eight bytes add up to 0 modulo 256; false for an empty buffer.
  bool checksumValid() const { return checksumValid_; }
  /// The low nibble of the first byte.
  Kex::U8 ipmiVersion() const { return bytes_[kVersion] & 0x0f; }
  /// Start of the product info area in bytes, one byte wide; 0 when there is no such area.
  Kex::U8 productAreaOffset() const { return static_cast<Kex::U8>(bytes_[kProductArea] * 8); }
  /// What makes the header unacceptable: nobody has written to the memory, else another version
  /// than 1, else a wrong checksum, which is told with the one that would be right, else a product
  /// info area at 0. None for an accepted header.
  std::optional<RecordFault> fault() const;
  /// As they stand on the wire, the checksum last.
  std::array<Kex::U8, kLength> const& bytes() const { return bytes_; }

 private:
  std::array<Kex::U8, kLength> bytes_;
  bool checksumValid_;
};

}  // namespace Ipmi
