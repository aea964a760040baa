// What a terminal gets more than a file does: colours, and a line that tells of progress.
#include "agent/base/Terminal.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>

#include "agent/base/Text.h"

namespace Agent {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLong{1};
constexpr std::chrono::milliseconds kBetween{200};
/// Fits every terminal.
constexpr std::size_t kColumns = 78;

struct Progress {
  bool isWanted = isatty(STDERR_FILENO) != 0;
  Clock::time_point next = Clock::now() + kLong;
  bool isShown = false;
};

/// Its time counts from the first call on.
Progress& theProgress() {
  static Progress progress;
  return progress;
}

std::string_view variable(char const* name) {
  char const* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

bool hasColours() {
  static bool const has =
      isOutTerminal() && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
  return has;
}

}  // namespace

bool isOutTerminal() { return isatty(STDOUT_FILENO) != 0; }

std::string inLook(Look look, std::string_view text) {
  constexpr std::string_view kStarts[] = {"\x1b[1m", "\x1b[32m", "\x1b[31m"};
  if (!hasColours()) {
    return std::string(text);
  }
  return std::string(kStarts[static_cast<std::size_t>(look)]).append(text) + "\x1b[0m";
}

bool isProgressDue() {
  Progress const& progress = theProgress();
  return progress.isWanted && Clock::now() >= progress.next;
}

void noProgress() { theProgress().isWanted = false; }

void showProgress(std::string_view text) {
  // Written at once: nothing comes in between.
  std::cerr << '\r' + escaped(text).substr(0, kColumns) + "\x1b[K";
  theProgress().next = Clock::now() + kBetween;
  theProgress().isShown = true;
}

void eraseProgress() {
  if (theProgress().isShown) {
    std::cerr << "\r\x1b[K";
    theProgress().isShown = false;
  }
}

}  // namespace Agent
