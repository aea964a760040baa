// What may be wrong with the memory of a supply that is not identified.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "agent/report/FruBytes.h"
#include "agent/report/Supply.h"

namespace Agent {

/// What a person may look at first.
struct Hint {
  std::string text;
  /// The length of the product info area, in units of 8 bytes, with which its checksum is right;
  /// none where something else is the matter.
  std::optional<Kex::U8> length{};
  /// Whether the supply is told of with that length in place of its own.
  bool isRepaired = false;
};

/// What is known of `supply`'s memory: `fru`, of which `fileLength` bytes are in the file that it
/// is simulated from, if it is. Told are a product info area that is right but for its length, and
/// a file that ends inside what recognition needs. None when nothing is told.
std::optional<Hint> hintOf(Supply const& supply, FruBytes const& fru,
                           std::optional<std::size_t> fileLength);

/// What recognition needs of the memory `fru`, with this length of its product info area, and its
/// checksum set right.
std::vector<Kex::U8> repaired(FruBytes const& fru, Kex::U8 length);

}  // namespace Agent
