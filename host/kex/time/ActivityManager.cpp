// The thread's run loop: what is pending, and the clock.
#include "host/kex/time/ActivityManager.h"

#include <cmath>

namespace Kex {

ActivityManagerConfig::ActivityManagerConfig() : clock_(make<Clock>(Name("clock"))) {}

void ActivityManager::runPending() {
  if (isRunning_) {
    return;
  }
  struct Running {
    bool& flag;
    explicit Running(bool& isRunning) : flag(isRunning = true) {}
    Running(Running const&) = delete;
    Running& operator=(Running const&) = delete;
    ~Running() { flag = false; }
  } const running(isRunning_);
  while (Activity::runFirst()) {
  }
}

void ActivityManager::runUntil(double time) {
  Clock& clock = *config_.clock();
  runPending();
  while (std::isfinite(clock.nextDeadline()) && clock.nextDeadline() <= time) {
    clock.timeIs(clock.nextDeadline());
    runPending();
  }
  clock.timeIs(time);
  runPending();
}

ActivityManager& activityManager() {
  // Never destroyed: reactors that outlive main() still hold its clock.
  static auto& manager = *new ActivityManager;
  return manager;
}

}  // namespace Kex
