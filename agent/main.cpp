// psu-agent: recognises power supplies and prints their FDL.
#include <fcntl.h>

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

/// A standard stream that the program was started without stays as good as closed: no file that is
/// opened later takes its place.
void keepStandardStreams() {
  constexpr int kWrongWay[] = {O_WRONLY, O_RDONLY, O_RDONLY};
  for (int stream = 0; int const flags : kWrongWay) {
    if (fcntl(stream++, F_GETFD) < 0) {
      static_cast<void>(open("/dev/null", flags));  // the lowest number that is free
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  keepStandardStreams();
  std::set_new_handler(&handleOutOfMemory);
  return static_cast<int>(Agent::runCommandLine(argc, argv));
}
