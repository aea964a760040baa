// Fixed-width names of the numbers that the framework's schemas speak of.
#pragma once

#include <cstdint>

namespace Kex {

using U8 = std::uint8_t;
using U32 = std::uint32_t;
/// `unsigned long long`, since that is the built-in type that the schemas name.
using U64 = unsigned long long;

/// Identifies an attribute within its type; 0 stands for one that cannot be addressed by number.
using AttributeId = U32;

}  // namespace Kex
