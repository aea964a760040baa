// How other threads reach the run loop's thread.
#pragma once

#include <functional>

namespace Agent {

/// Hands work to the run loop's thread, which carries it out as soon as it can. May be called from
/// any thread.
using Post = std::function<void(std::function<void()> work)>;

}  // namespace Agent
