// psu-agent: recognises power supplies and prints their FDL.
#include <cstdio>
#include <cstdlib>
#include <new>

#include "agent/base/ExitStatus.h"
#include "agent/commands/CommandLine.h"

namespace {

/// Ends the program at once: unwinding needs memory too, in places that must not throw.
[[noreturn]] void handleOutOfMemory() {
  static_cast<void>(std::fputs("psu-agent: out of memory\n", stderr));
  std::_Exit(static_cast<int>(Agent::Status::failed));
}

}  // namespace

int main(int argc, char** argv) {
  std::set_new_handler(&handleOutOfMemory);
  return static_cast<int>(Agent::runCommandLine(argc, argv));
}
