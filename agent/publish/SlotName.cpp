// What a slot may be called.
#include "agent/publish/SlotName.h"

#include <algorithm>

namespace Agent {

bool isSlotName(std::string_view name) {
  constexpr std::string_view kAllowed =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
  constexpr std::size_t kLongest = 200;
  return !name.empty() && name.size() <= kLongest && name.front() != '.' &&
         name.find_first_not_of(kAllowed) == std::string_view::npos;
}

bool isTakenName(std::string_view name) {
  constexpr std::string_view kTaken[] = {"IdentifierFactory", "cell", "config", "status"};
  return std::ranges::find(kTaken, name) != std::ranges::end(kTaken);
}

}  // namespace Agent
