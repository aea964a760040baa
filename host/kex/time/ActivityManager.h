// The thread's run loop: what is pending, and the clock.
#pragma once

#include "host/kex/base/Export.h"
#include "host/kex/notify/Activity.h"
#include "host/kex/time/Clock.h"

namespace Kex {

/// What the run loop was set up with.
class KEX_API ActivityManagerConfig {
 public:
  ActivityManagerConfig();

  /// The process clock; whoever owns the loop steps it with `Clock::timeIs`.
  Ptr<Clock> const& clock() const { return clock_; }

 private:
  Ptr<Clock> clock_;
};

/// Runs what is pending, in the order in which it was queued. No activity is ever entered from
/// inside another one: whatever an activity causes waits until it has returned.
class KEX_API ActivityManager {
 public:
  ActivityManager() = default;
  ActivityManager(ActivityManager const&) = delete;
  ActivityManager& operator=(ActivityManager const&) = delete;

  ActivityManagerConfig const& config() const { return config_; }

  /// Runs activities until none is pending; called from inside one, does nothing. An exception of
  /// an activity ends the run and reaches the caller; what is still pending stays so.
  void runPending();
  /// Steps the clock from deadline to deadline up to `time` (seconds) and runs what that causes:
  /// the whole loop of a simulation.
  void runUntil(double time);

 private:
  bool isRunning_ = false;
  ActivityManagerConfig config_;
};

/// The run loop of the agent's one thread.
KEX_API ActivityManager& activityManager();

}  // namespace Kex
