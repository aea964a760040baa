// The option --trace: trace messages of the program and its plug-in.
#pragma once

#include <string>
#include <vector>

namespace Agent {

/// Turns trace levels on, from texts `HANDLE=LEVEL,LEVEL...`, once the plug-in is loaded: what
/// there is then can be traced. Throws a `UsageError` for a text that is none, and for a handle
/// that is not there.
void turnTracesOn(std::vector<std::string> const& settings);

/// What the levels that are in use tell of.
inline constexpr char const* kTraceLevels =
    "0 which type examines a supply, 1 the key that it read, 3 handlers entered and transfers set "
    "up, 4 outcomes";

/// Names of the trace handles that there are, joined by commas.
std::string traceHandles();

}  // namespace Agent
