// The table of all supported models.
#pragma once

#include "ipmi/Model.h"

namespace Emerson::IpmiIdentifier {

/// The row of a type.
Model const& modelOf(ModelId id) noexcept;

}  // namespace Emerson::IpmiIdentifier
