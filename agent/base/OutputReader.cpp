// Whether what the program writes arrives.
#include "agent/base/OutputReader.h"

#include <poll.h>

#include <cerrno>
#include <csignal>
#include <iostream>

#include "agent/base/Error.h"

namespace Agent {

void ignoreWriteSignals() {
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

bool hasReader(int file) {
  pollfd asked{.fd = file, .events = 0, .revents = 0};
  return ::poll(&asked, 1, 0) <= 0 || (asked.revents & (POLLERR | POLLHUP)) == 0;
}

void flushOut() {
  errno = 0;
  if (!std::cout.flush()) {
    std::string const cause = errno == 0 ? "" : ": " + systemError(errno);
    std::cout.clear();
    throw Failure("standard output: cannot write" + cause);
  }
}

}  // namespace Agent
