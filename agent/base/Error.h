// What ends the program, or one of its sources, before its work is done.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

#include "agent/base/Journal.h"

namespace Agent {

/// Something could not be opened, loaded or written. The text is one line that says where and names
/// the value.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The command line, or a file that stands for one, does not make sense. The text is one line that
/// says where and names the value.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What the system says of its error number `number`: "No such file or directory", ...
std::string systemError(int number);

/// What `thrown` says to a person. A framework exception whose text is a mere name is told with
/// what is wrong with it: "driver is missing, or has another type".
std::string exceptionText(std::exception_ptr const& thrown);

/// Tells a person of `text`, as one line on stderr in which very long words are cut.
void complain(std::string const& text, Priority priority = Priority::error);
/// From now on `complain` tells of errors only, and nobody of progress.
void tellErrorsOnly();

}  // namespace Agent
