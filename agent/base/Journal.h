// How much a line matters, where the system's journal keeps it.
#pragma once

#include <string_view>

namespace Agent {

/// The numbers are those of syslog(3).
enum class Priority : unsigned char { error = 3, warning = 4, info = 6 };

/// Whether what is written to `file` goes to the system's journal.
bool isJournal(int file);
/// What a line on `file` begins with: `<N>` where it goes to the journal, else nothing.
std::string_view priorityPrefix(int file, Priority priority);

}  // namespace Agent
