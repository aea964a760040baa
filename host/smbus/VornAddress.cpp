// Smbus::VornAddress, where on a bus an operation goes.
#include "host/smbus/VornAddress.h"

#include "host/kex/base/Exception.h"
#include "host/kex/base/Format.h"
#include "host/kex/generic/ValueType.h"

namespace Hardware {

Kex::KexType& SmbusDeviceId::_fwkType() {
  static Kex::KexType& record = Kex::newValueType<SmbusDeviceId>("Hardware::SmbusDeviceId");
  return record;
}

Kex::String8 valueToStrep(SmbusDeviceId const& value) {
  return Kex::format("0x%02x", value.value());
}

}  // namespace Hardware

namespace Smbus {

U7::U7(Kex::U8 value) : value_(value) {
  if (value > 0x7f) {
    Kex::throwRangeException("U7::value < 0 or > 0x7f not allowed");
  }
}

Kex::KexType& VornAddress::_fwkType() {
  static Kex::KexType& record = Kex::newValueType<VornAddress>("Smbus::VornAddress");
  return record;
}

Kex::String8 valueToStrep(VornAddress const& value) {
  return Kex::format("0x%llx", value.encoded());
}

}  // namespace Smbus

namespace Kex {

Smbus::VornAddress Strep<Smbus::VornAddress>::toValue(String8 const& text) {
  return Smbus::VornAddress(strepToValue<U64>(text));
}

Hardware::SmbusDeviceId Strep<Hardware::SmbusDeviceId>::toValue(String8 const& text) {
  return Hardware::SmbusDeviceId(strepToValue<U8>(text));
}

}  // namespace Kex
