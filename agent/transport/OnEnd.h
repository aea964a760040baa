// How a transport that has an end tells of it.
#pragma once

#include <functional>
#include <string>

namespace Agent {

/// Called once, from the run loop, when nothing more is answered; `why` is a text for a person that
/// names the source.
using OnEnd = std::function<void(std::string const& why)>;

}  // namespace Agent
