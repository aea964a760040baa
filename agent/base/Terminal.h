// What a terminal gets more than a file does: colours, and a line that tells of progress.
#pragma once

#include <string>
#include <string_view>

namespace Agent {

/// Whether standard output is a terminal.
bool isOutTerminal();

/// How a text is set off from others.
enum class Look : unsigned char { heading, good, bad };

/// `text` in the look's colour; as it is where standard output is no terminal that has colours, or
/// where the environment has a NO_COLOR that is not empty.
std::string inLook(Look look, std::string_view text);

/// Whether a person at a terminal waits to be told how far a run is: from its second second on, a
/// few times a second.
bool isProgressDue();
/// Tells that something else writes on standard error, line by line: nobody waits from now on.
void noProgress();
/// Shows `text`, cut to one line of it, on standard error, in place of the one before.
void showProgress(std::string_view text);
/// Takes away what is shown; to be called before anything else is written.
void eraseProgress();

/// Shows the text that `told` returns, if it is due.
template <class Told>
void progress(Told const& told) {
  if (isProgressDue()) {
    showProgress(told());
  }
}

}  // namespace Agent
