// psu-agent simulate: a scenario on virtual time.
#pragma once

#include "agent/commands/Command.h"

namespace Agent {

/// Adds the command `simulate [--transcript] [--json] SCENARIO`.
void addSimulate(CLI::App& program, Action& action);

}  // namespace Agent
