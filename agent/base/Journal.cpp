// How much a line matters, where the system's journal keeps it.
#include "agent/base/Journal.h"

#include <sys/stat.h>

#include <cstdlib>
#include <string>

namespace Agent {

bool isJournal(int file) {
  char const* const journal = std::getenv("JOURNAL_STREAM");
  struct stat status {};
  return journal != nullptr && ::fstat(file, &status) == 0 &&
         std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino) == journal;
}

std::string_view priorityPrefix(int file, Priority priority) {
  if (!isJournal(file)) {
    return "";
  }
  switch (priority) {
    case Priority::error: return "<3>";
    case Priority::warning: return "<4>";
    case Priority::info: return "<6>";
  }
  return "";
}

}  // namespace Agent
