// What ends the program, or one of its sources, before its work is done.
#include "agent/base/Error.h"

#include <iostream>
#include <system_error>

#include "agent/base/Text.h"

namespace Agent {

std::string systemError(int number) { return std::generic_category().message(number); }

void complain(std::string const& text) { std::cerr << "psu-agent: " << oneLine(text) << '\n'; }

}  // namespace Agent
