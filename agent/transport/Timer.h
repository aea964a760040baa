// A single-shot timer on the framework's clock.
#pragma once

#include <functional>

#include "host/kex/time/Clock.h"

namespace Agent {

/// Calls back from the run loop, once, when the clock has reached a time. Starting and firing cost
/// no allocation. On the run loop's thread only.
class Timer {
 public:
  explicit Timer(std::function<void()> onTime);
  Timer(Timer const&) = delete;
  Timer& operator=(Timer const&) = delete;
  /// A timer that goes away does not fire any more; it may go away while it fires.
  ~Timer();

  /// Fires at `time` (seconds), in place of what was set before; at once if that has passed.
  void startAt(double time);
  /// Fires `seconds` from now.
  void startIn(double seconds) { startAt(now() + seconds); }
  void stop();
  /// The clock's time in seconds.
  static double now();

 private:
  class Reactor;

  Kex::Ptr<Reactor> reactor_;
};

}  // namespace Agent
