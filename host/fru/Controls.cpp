// Presence lines of a slot: an interrupt controller and a general-purpose output.
#include "host/fru/Controls.h"

#include "host/kex/type/KexType.h"

namespace Fru {

Kex::KexType& IntCtrl::_fwkType() {
  static Kex::KexType& record = Kex::newHostType<IntCtrl>("Fru::IntCtrl", &Kex::Entity::_fwkType());
  return record;
}

Kex::KexType& IntCtrl::fwkType() const { return _fwkType(); }

IntCtrl::~IntCtrl() = default;

Kex::KexType& Gpo::_fwkType() {
  static Kex::KexType& record = Kex::newHostType<Gpo>("Fru::Gpo", &Kex::Entity::_fwkType());
  return record;
}

Kex::KexType& Gpo::fwkType() const { return _fwkType(); }

Gpo::~Gpo() = default;

}  // namespace Fru
