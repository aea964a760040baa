// psu-agent doctor: whether an i2c adapter can serve.
#pragma once

#include "agent/commands/Command.h"

namespace Agent {

/// Adds the command `doctor i2c:N...`.
void addDoctor(CLI::App& program, Action& action);

}  // namespace Agent
