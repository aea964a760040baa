// psu-agent monitor: slots that are watched until told otherwise.
#pragma once

#include "agent/commands/Command.h"

namespace Agent {

/// Adds the command `monitor --slot NAME=SOURCE... [--poll-interval S] [--duration S] [--json]
/// [--record FILE] [--publish DIR]`.
void addMonitor(CLI::App& program, Action& action);

}  // namespace Agent
