// The command line of psu-agent.
#pragma once

#include "agent/base/ExitStatus.h"

namespace Agent {

/// Does what the command line says. Data goes to stdout, everything else to stderr.
Status runCommandLine(int argc, char const* const* argv);

}  // namespace Agent
