// Strips blanks and tabs at both ends of a text.
#include "ipmi/Trim.h"

#include "host/descriptors/Trim.h"

namespace Emerson::IpmiIdentifier {

// NOLINTNEXTLINE(performance-unnecessary-value-param)
Kex::String8 trim(Kex::String8 s) { return Kex::String8(Descriptors::trimmed(s.view())); }

}  // namespace Emerson::IpmiIdentifier
