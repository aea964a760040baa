// The factories of the descriptor classes.
#include "ipmi/Descriptors.h"

#include <utility>

namespace Emerson::IpmiIdentifier {

#define EMERSON_DESCRIPTOR_FACTORY(type, stem) \
  Kex::Ptr<type> stem##Factory(Kex::Name name) { return Kex::make<type>(std::move(name)); }
EMERSON_DESCRIPTOR_TYPES(EMERSON_DESCRIPTOR_FACTORY)
#undef EMERSON_DESCRIPTOR_FACTORY

}  // namespace Emerson::IpmiIdentifier
