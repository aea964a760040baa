// Ipmi::IdpromContents, what was parsed of one supply's FRU data.
#include "host/ipmi/IdpromContents.h"

#include "host/kex/entity/Directory.h"
#include "host/kex/type/KexType.h"

namespace Ipmi {

Kex::KexType& IdpromContents::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<IdpromContents>("Ipmi::IdpromContents", &PtrInterface::_fwkType());
  return record;
}

Kex::KexType& IdpromContents::fwkType() const { return _fwkType(); }

IdpromContents::~IdpromContents() = default;

Kex::String8 IdpromContents::path() const {
  return owner_ == nullptr ? Kex::String8() : Kex::memberPath(*owner_, "idprom");
}

}  // namespace Ipmi
