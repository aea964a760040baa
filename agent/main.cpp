// psu-agent: recognises power supplies and prints their FDL.
#include "agent/commands/CommandLine.h"

int main(int argc, char** argv) { return static_cast<int>(Agent::runCommandLine(argc, argv)); }
