// What somebody may have meant who mistyped a name.
#include "agent/commands/Suggestion.h"

#include <algorithm>

namespace Agent {

namespace {

/// Letters to insert, remove, replace, or exchange with the next, to make one of the other.
std::size_t distance(std::string_view one, std::string_view other) {
  std::size_t const width = other.size() + 1;
  std::vector<std::size_t> cells((one.size() + 1) * width);
  auto const at = [&](std::size_t i, std::size_t j) -> std::size_t& {
    return cells[i * width + j];
  };
  for (std::size_t i = 0; i <= one.size(); ++i) {
    for (std::size_t j = 0; j <= other.size(); ++j) {
      if (i == 0 || j == 0) {
        at(i, j) = i + j;
        continue;
      }
      std::size_t const replaced = at(i - 1, j - 1) + (one[i - 1] == other[j - 1] ? 0 : 1);
      at(i, j) = std::min({replaced, at(i - 1, j) + 1, at(i, j - 1) + 1});
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
        at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
      }
    }
  }
  return at(one.size(), other.size());
}

}  // namespace

std::string nearestOf(std::string_view word, std::vector<std::string> const& names) {
  constexpr std::size_t kShortestBeginning = 3;
  constexpr std::size_t kLettersPerMistake = 3;
  std::string nearest;
  std::size_t least = 0;
  for (std::string const& name : names) {
    bool const isBeginning = word.size() >= kShortestBeginning && name.starts_with(word);
    std::size_t const most = name.size() / kLettersPerMistake;
    // What is much longer is not compared: it may be of any length.
    if (!isBeginning && word.size() > name.size() + most) {
      continue;
    }
    std::size_t const mistakes = isBeginning ? 1 : distance(word, name);
    if ((isBeginning || mistakes <= most) && (nearest.empty() || mistakes < least)) {
      nearest = name;
      least = mistakes;
    }
  }
  return nearest;
}

}  // namespace Agent
