// The makers whose supplies an identifier accepts, as a person is told of them.
#include "host/detector/AcceptedMakers.h"

#include <set>
#include <string>

#include "host/kex/generic/Holder.h"
#include "host/kex/type/KexType.h"

namespace PowerSupplyDetector {

Kex::String8 withAcceptedMakers(Kex::String8 const& reason, Kex::PtrInterface& identifier) {
  auto const adapter =
      identifier.fwkType().newAdapter(Kex::Ptr<Kex::PtrInterface>(&identifier), true);
  Kex::KexAttr const* const attribute = adapter->attribute("mfrIdSupported");
  if (attribute == nullptr || attribute->kind() != Kex::KexAttr::Kind::collection) {
    return reason;
  }
  std::set<Kex::String8> accepted;
  for (auto const walk = adapter->iterator(attribute->id()); !walk->isAtEnd(); walk->advance()) {
    if (walk->value()->text() == Kex::holderOf(true)->text()) {
      accepted.insert(walk->key()->text());
    }
  }
  std::string texts(reason.view());
  for (char const* before = ", only \""; Kex::String8 const& text : accepted) {
    texts.append(before).append(text.view()) += '"';
    before = ", \"";
  }
  return Kex::String8(texts);
}

}  // namespace PowerSupplyDetector
