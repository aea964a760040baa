// What is told of a supply: the JSON object, the lines for people, the exit status.
#pragma once

#include <string>
#include <vector>

#include "agent/base/ExitStatus.h"
#include "agent/base/JsonObject.h"
#include "agent/report/Hint.h"
#include "agent/report/Supply.h"

namespace Agent {

/// Adds what a JSON object tells of a supply, from `verdict` to `fdl`. Every key is there, null
/// where nothing is known; bytes of the supply are the code points of their values, the MFR_ID is
/// cut at its first NUL. What is told of a memory with another length than its own has "length"
/// among its suspects.
JsonObject& addSupply(JsonObject& object, Supply const& supply,
                      std::optional<Hint> const& hint = std::nullopt);

/// Adds the same keys for a source of which no supply is known, and why: all but `reason` are null.
JsonObject& addFailure(JsonObject& object, std::string_view reason);

/// A field that would change the meaning of the FDL, by its JSON name.
struct Suspect {
  char const* field;
  std::string text;
};

/// The fields that would change the meaning of the FDL, which has them in quotes as they are
/// stored, or of a terminal that shows it: fields written into it that hold a quote of either kind,
/// a backslash, or a control byte, below 0x20 or 0x7F; at a NUL the field is cut.
std::vector<Suspect> suspects(Supply const& supply);

/// Why the supply is not identified, with what was read of it:
/// `unrecognised: REASON; HINT (MFR_ID "...", product name "...", ...)`.
std::string explanation(Supply const& supply, std::optional<Hint> const& hint = std::nullopt);
/// A line for people: `SECONDS SLOT VERDICT DESCRIPTOR SERIAL` of an identified supply, with `-`
/// for empty, and `SECONDS SLOT VERDICT reason` of another.
std::string supplyLine(double time, std::string const& slot, Supply const& supply);

/// What the supply's FDL assigns to `name`, without quotes around it; empty where it does not.
std::string_view assigned(Supply const& supply, std::string_view name);

/// What the supply makes of the exit status.
Status statusOf(Supply const& supply);

}  // namespace Agent
