// Smbus::VornAddress, where on a bus an operation goes.
#pragma once

#include "host/kex/base/Export.h"
#include "host/kex/base/String8.h"
#include "host/kex/base/Types.h"
#include "host/kex/generic/TextConversion.h"

namespace Hardware {

/// An SMBus device address as it was configured: one byte, not checked.
class KEX_API SmbusDeviceId {
 public:
  static Kex::KexType& _fwkType();

  constexpr SmbusDeviceId() = default;
  /// Any byte, also one above the 7 bits of an address.
  constexpr SmbusDeviceId(Kex::U8 value) : value_(value) {}
  /// As it was configured, not checked.
  constexpr Kex::U8 value() const { return value_; }
  bool operator==(SmbusDeviceId const&) const = default;

 private:
  Kex::U8 value_ = 0;
};

/// 0x-hexadecimal.
KEX_API Kex::String8 valueToStrep(SmbusDeviceId const& value);

/// How long a transaction may take, in milliseconds.
class SmbusTimeout {
 public:
  /// 0 to 65,535 ms.
  constexpr explicit SmbusTimeout(std::uint16_t milliseconds) : milliseconds_(milliseconds) {}
  /// See the constructor.
  constexpr std::uint16_t milliseconds() const { return milliseconds_; }

 private:
  std::uint16_t milliseconds_;
};

}  // namespace Hardware

namespace Smbus {

/// A number of 7 bits.
class KEX_API U7 {
 public:
  /// Throws the range exception "U7::value < 0 or > 0x7f not allowed".
  explicit U7(Kex::U8 value);
  /// 0 to 0x7F.
  Kex::U8 value() const { return value_; }

 private:
  Kex::U8 value_;
};

/// Address of an SMBus operation, encoded in 64 bits:
///
/// | bits   | field      | meaning                                       |
/// |--------|------------|-----------------------------------------------|
/// | 0-6    | device     | 7-bit device address                          |
/// | 8-15   | offset     | command code                                  |
/// | 16-31  | busTimeout | longest time of the transaction, milliseconds |
///
/// The other bits are zero.
class KEX_API VornAddress {
 public:
  static Kex::KexType& _fwkType();

  constexpr VornAddress() = default;
  /// `encoded` has the layout above.
  constexpr explicit VornAddress(Kex::U64 encoded) : encoded_(encoded) {}

  /// In the layout above.
  constexpr Kex::U64 encoded() const { return encoded_; }
  /// The 7-bit device address.
  constexpr Kex::U8 device() const { return static_cast<Kex::U8>(encoded_ & 0x7f); }
  /// The command code.
  constexpr Kex::U8 offset() const { return static_cast<Kex::U8>(encoded_ >> 8); }
  /// In milliseconds.
  constexpr std::uint16_t busTimeout() const { return static_cast<std::uint16_t>(encoded_ >> 16); }

  void deviceIs(U7 device) { fieldIs(0, 0x7f, device.value()); }
  void offsetIs(Kex::U8 offset) { fieldIs(8, 0xff, offset); }
  void busTimeoutIs(Hardware::SmbusTimeout timeout) { fieldIs(16, 0xffff, timeout.milliseconds()); }

  bool operator==(VornAddress const&) const = default;

 private:
  void fieldIs(unsigned shift, Kex::U64 mask, Kex::U64 value) {
    encoded_ = (encoded_ & ~(mask << shift)) | (value << shift);
  }

  Kex::U64 encoded_ = 0;
};

/// 0x-hexadecimal.
KEX_API Kex::String8 valueToStrep(VornAddress const& value);

}  // namespace Smbus

namespace Kex {

template <>
struct KEX_API Strep<Smbus::VornAddress> {
  static Smbus::VornAddress toValue(String8 const& text);
};
template <>
struct KEX_API Strep<Hardware::SmbusDeviceId> {
  static Hardware::SmbusDeviceId toValue(String8 const& text);
};

}  // namespace Kex
