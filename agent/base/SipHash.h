// SipHash-2-4, a keyed hash of short texts.
#pragma once

#include <array>
#include <string_view>

#include "host/kex/base/Types.h"

namespace Agent {

/// 16 bytes that one must have to know what a text hashes to.
using HashKey = std::array<Kex::U8, 16>;

/// SipHash-2-4 of `text` (Aumasson and Bernstein, 2012).
Kex::U64 sipHash(HashKey const& key, std::string_view text);

}  // namespace Agent
