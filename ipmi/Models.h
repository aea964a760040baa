// The table of all supported models.
#pragma once

#include <array>
#include <cstddef>

#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

/// All rows, in the order of the list of types.
extern std::array<Model, kModelCount> const kModels;

/// The row of a type.
inline Model const& modelOf(ModelId id) noexcept { return kModels[static_cast<std::size_t>(id)]; }

}  // namespace Emerson::IpmiIdentifier
