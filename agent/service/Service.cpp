// What the service manager is told of the program that it started.
#include "agent/service/Service.h"

#include <systemd/sd-daemon.h>

#include <cstdint>
#include <cstdlib>

namespace Agent {

namespace {

void notify(std::string const& state) { ::sd_notify(0, state.c_str()); }

}  // namespace

Service::Service()
    : isListening_(std::getenv("NOTIFY_SOCKET") != nullptr),
      readiness_([this] { becomeReady(); }),
      watchdog_([this] { feedWatchdog(); }) {
  std::uint64_t microseconds = 0;
  if (isListening_) {
    readiness_.startIn(kLongestUnready);
  }
  if (::sd_watchdog_enabled(0, &microseconds) > 0) {
    watchdogInterval_ = static_cast<double>(microseconds) / 2e6;
    feedWatchdog();
  }
}

Service::~Service() { notify("STOPPING=1"); }

void Service::stateIs(std::string const& text, bool isComplete) {
  if (text_ != text) {
    text_ = text;
    notify("STATUS=" + text_);
  }
  if (isComplete && !isReady_) {
    becomeReady();
  }
}

void Service::reloadBegins() { notify("RELOADING=1"); }

void Service::reloadEnds() {
  if (isReady_) {
    notify("READY=1");
  }
}

void Service::feedWatchdog() {
  notify("WATCHDOG=1");
  watchdog_.startIn(watchdogInterval_);
}

void Service::becomeReady() {
  readiness_.stop();
  isReady_ = true;
  notify("READY=1");
}

}  // namespace Agent
