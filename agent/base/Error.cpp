// What ends the program, or one of its sources, before its work is done.
#include "agent/base/Error.h"

#include <unistd.h>

#include <iostream>
#include <system_error>

#include "agent/base/Text.h"
#include "host/kex/base/Exception.h"

namespace Agent {

std::string systemError(int number) { return std::generic_category().message(number); }

std::string exceptionText(std::exception_ptr const& thrown) {
  if (!thrown) {
    return "no exception";
  }
  try {
    std::rethrow_exception(thrown);
  } catch (Kex::Exception const& refused) {
    return std::string(refused.kind()) + " exception: " + refused.what();
  } catch (std::exception const& error) {
    return error.what();
  } catch (...) {
    return "an exception that has no text";
  }
}

void complain(std::string const& text, Priority priority) {
  std::cerr << priorityPrefix(STDERR_FILENO, priority) << "psu-agent: " << oneLine(text) << '\n';
}

}  // namespace Agent
