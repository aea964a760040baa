// What somebody may have meant who mistyped a name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Agent {

/// That of `names` which is nearest to `word`: it differs in few letters for its length, those
/// that changed places counted once, or `word` is its beginning. Empty when none is near.
std::string nearestOf(std::string_view word, std::vector<std::string> const& names);

}  // namespace Agent
