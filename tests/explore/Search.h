// The search: every state that can be reached, each by a shortest way.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tests/explore/Moves.h"

namespace explore {

/// What a search came to.
struct Found {
  std::size_t states = 0;
  std::size_t moves = 0;
  /// What is wrong, with the moves that lead there; empty when nothing is. One line each.
  std::vector<std::string> faults;
};

/// Searches breadth first until no new state is found, or something is wrong, in `jobs` processes
/// at a time. `tell` is given a line about each round.
Found search(std::vector<Move> const& moves, unsigned jobs,
             std::function<void(std::string const&)> const& tell);

}  // namespace explore
