// Strips blanks and tabs at both ends of a text.
#pragma once

#include "host/kex/base/String8.h"

namespace Emerson::IpmiIdentifier {

/// `Descriptors::trimmed` as a string of its own.
Kex::String8 trim(Kex::String8 s);

}  // namespace Emerson::IpmiIdentifier
