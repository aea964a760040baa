// A configuration file, in the format of the command-line library.
#pragma once

#include <functional>
#include <string>

#include "agent/commands/Parameters.h"

namespace Agent {

/// Sets the options that `file` names, of those that `addTo` adds: each by its long name without
/// the dashes and `key = value`, `key = ["value", ...]` or a bare `key` for a switch; what follows
/// a `#` that is not in quotes is a comment. `isGiven` tells which options keep what they have;
/// `check` is called after each key.
///
/// Throws a `Failure` when the file cannot be read, and a `UsageError` with file, line and key when
/// it does not make sense, also where `check` throws one.
void readConfigFile(std::string const& file, std::function<void(Parameters&)> const& addTo,
                    std::function<bool(std::string const& option)> const& isGiven,
                    std::function<void()> const& check);

}  // namespace Agent
