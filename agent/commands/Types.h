// psu-agent types: prints the types that the plug-in brings.
#pragma once

#include "agent/commands/Command.h"

namespace Agent {

void addTypes(CLI::App& program, Action& action);

}  // namespace Agent
