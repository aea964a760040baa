// A slot's access to its bus, and how it is described.
#include "host/hardware/Vorn.h"

#include "host/kex/type/KexType.h"

namespace Hardware {

Kex::KexType& Vorn::_fwkType() {
  static Kex::KexType& record = Kex::newHostType<Vorn>("Hardware::Vorn", &PtrInterface::_fwkType());
  return record;
}

Kex::KexType& Vorn::fwkType() const { return _fwkType(); }

Vorn::~Vorn() = default;

Kex::KexType& VornDesc::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<VornDesc>("Hardware::VornDesc", &PtrInterface::_fwkType());
  return record;
}

Kex::KexType& VornDesc::fwkType() const { return _fwkType(); }

VornDesc::~VornDesc() = default;

}  // namespace Hardware

namespace SmbusVorn {

Kex::KexType& VornDesc::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<VornDesc>("SmbusVorn::VornDesc", &Hardware::VornDesc::_fwkType());
  return record;
}

Kex::KexType& VornDesc::fwkType() const { return _fwkType(); }

VornDesc::~VornDesc() = default;

}  // namespace SmbusVorn
