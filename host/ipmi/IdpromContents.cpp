// Ipmi::IdpromContents, what was parsed of one supply's FRU data.
#include "host/ipmi/IdpromContents.h"

#include "host/kex/type/KexType.h"

namespace Ipmi {

Kex::KexType& IdpromContents::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<IdpromContents>("Ipmi::IdpromContents", &PtrInterface::_fwkType());
  return record;
}

Kex::KexType& IdpromContents::fwkType() const { return _fwkType(); }

IdpromContents::~IdpromContents() = default;

}  // namespace Ipmi
