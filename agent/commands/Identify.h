// psu-agent identify: prints the FDL of each source's supply.
#pragma once

#include "agent/commands/Command.h"
#include "agent/slots/Source.h"

namespace Agent {

void addIdentify(CLI::App& program, Action& action);

/// Adds `--mfr-id`, what supplies that are simulated from files answer.
void addMfrIdOption(CLI::App& command, std::string& mfrId);

}  // namespace Agent
