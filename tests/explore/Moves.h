// The alphabet: what may happen to a slot at one moment.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/explore/Rig.h"

namespace explore {

/// One thing that may happen.
struct Move {
  std::string what;
  std::function<bool(Rig const&)> isPossible;
  std::function<void(Rig&)> happen;
};

/// Every class of answer, every outside act and every pause; of the `small` alphabet few of a kind.
std::vector<Move> alphabet(bool small);

}  // namespace explore
