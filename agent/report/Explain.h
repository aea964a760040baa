// The road of one supply, for a person.
#pragma once

#include <string>

#include "agent/recording/TransactionLog.h"
#include "agent/report/Hint.h"
#include "agent/report/Supply.h"

namespace Agent {

/// How `supply` was recognised, or why it was not: its transactions with their bytes, MFR_ID, FRU
/// common header and areas field by field as far as `fru` has them, the descriptors in the order in
/// which they were asked, with the file that each came from and how close the supply came to its
/// keys, and what `hint` tells. Lines have at most 80 columns (`source` aside); the line that made
/// identification fail begins with `>>`.
std::string explain(std::string const& source, TransactionLog const& log, Supply const& supply,
                    FruBytes const& fru, std::optional<Hint> const& hint);

}  // namespace Agent
