// Whether anybody reads what the program writes.
#include "agent/base/OutputReader.h"

#include <poll.h>

#include <csignal>

namespace Agent {

void ignoreWriteSignals() {
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

bool hasReader(int file) {
  pollfd asked{.fd = file, .events = 0, .revents = 0};
  return ::poll(&asked, 1, 0) <= 0 || (asked.revents & (POLLERR | POLLHUP)) == 0;
}

}  // namespace Agent
