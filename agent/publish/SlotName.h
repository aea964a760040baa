// What a slot may be called.
#pragma once

#include <string_view>

namespace Agent {

/// Whether `name` can be a slot's, and so a file's: at most 200 letters, digits, `.`, `_` and `-`,
/// not beginning with a dot.
bool isSlotName(std::string_view name);
/// Whether the tree of entities has something else at `/name`, so that no slot can be called so.
bool isTakenName(std::string_view name);

}  // namespace Agent
