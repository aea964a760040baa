// psu-agent call: one request to an attribute, through the generic interface.
#pragma once

#include "agent/commands/Command.h"

namespace Agent {

void addCall(CLI::App& program, Action& action);

}  // namespace Agent
