// What the service manager is told of the program that it started.
#include "agent/service/Service.h"

#include <dlfcn.h>
#include <systemd/sd-daemon.h>

#include <cstdint>
#include <cstdlib>

#include "agent/base/Error.h"

namespace Agent {

namespace {

/// The manager's library, which is loaded only where a manager listens: with all that it needs it
/// takes longer than to identify a file. It stays loaded.
class Systemd {
 public:
  Systemd()
      : library_(::dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL)),
        notify_(reinterpret_cast<decltype(notify_)>(symbol("sd_notify"))),
        isWatchdogEnabled_(
            reinterpret_cast<decltype(isWatchdogEnabled_)>(symbol("sd_watchdog_enabled"))) {}

  void notify(std::string const& state) const { notify_(0, state.c_str()); }
  /// The watchdog's interval in microseconds; 0 for none.
  std::uint64_t watchdogInterval() const {
    std::uint64_t microseconds = 0;
    return isWatchdogEnabled_(0, &microseconds) > 0 ? microseconds : 0;
  }

 private:
  void* symbol(char const* name) const {
    void* const found = library_ == nullptr ? nullptr : ::dlsym(library_, name);
    if (found == nullptr) {
      throw Failure(std::string("the service manager cannot be told: ") + ::dlerror());
    }
    return found;
  }

  void* library_;
  decltype(&::sd_notify) notify_;
  decltype(&::sd_watchdog_enabled) isWatchdogEnabled_;
};

Systemd const& systemd() {
  static Systemd const loaded;
  return loaded;
}

}  // namespace

Service::Service()
    : isListening_(std::getenv("NOTIFY_SOCKET") != nullptr),
      readiness_([this] { becomeReady(); }),
      watchdog_([this] { feedWatchdog(); }) {
  if (!isListening_) {
    return;
  }
  readiness_.startIn(kLongestUnready);
  if (std::uint64_t const microseconds = systemd().watchdogInterval(); microseconds != 0) {
    watchdogInterval_ = static_cast<double>(microseconds) / 2e6;
    feedWatchdog();
  }
}

Service::~Service() { notify("STOPPING=1"); }

void Service::notify(std::string const& state) const {
  if (isListening_) {
    systemd().notify(state);
  }
}

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
