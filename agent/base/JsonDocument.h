// A JSON document as it comes in: bounded, and no key twice.
#pragma once

#include <string_view>

#include "agent/base/JsonValue.h"

namespace Agent {

/// How deep arrays and objects may stand in one another, and how many keys one object may have; no
/// format that is read needs more.
inline constexpr std::size_t kDeepestNesting = 16;
inline constexpr std::size_t kMostKeys = 100;

/// Reads a whole document. Throws a `UsageError`: "no JSON from line 3, column 8 on", or what is
/// refused after its path: `slots[0].events[2].at: nested deeper than 16 levels`.
JsonValue::Json parseJson(std::string_view text);

}  // namespace Agent
