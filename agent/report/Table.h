// A table for people.
#pragma once

#include <string>
#include <vector>

#include "agent/report/Supply.h"

namespace Agent {

/// A row of a table of supplies.
struct SupplyRow {
  std::string source;
  /// Null where no supply is known.
  Supply const* supply;
};

/// SOURCE, TYPE, MODEL, SERIAL and VERDICT of each row, in columns, with a heading; `-` for what is
/// not known.
std::string tableOf(std::vector<SupplyRow> const& rows);

}  // namespace Agent
