// What the service manager is told of the program that it started.
#pragma once

#include <string>

#include "agent/transport/Timer.h"

namespace Agent {

/// Tells the service manager, where one listens (sd_notify(3)), that the program is ready, how it
/// is, and again and again that its run loop turns. On the run loop's thread only.
class Service {
 public:
  /// Longest time in seconds for which the program is not ready.
  static constexpr double kLongestUnready = 5;

  /// Throws a `Failure` where a manager listens that cannot be told.
  Service();
  Service(Service const&) = delete;
  Service& operator=(Service const&) = delete;
  /// Tells that the program ends.
  ~Service();

  /// Whether a manager listens: it starts a program that fails anew.
  bool isListening() const { return isListening_; }
  /// How the program is, in a line for a person, and whether that is complete: once it is, the
  /// program is ready.
  void stateIs(std::string const& text, bool isComplete);
  /// Tells that the configuration is read again, until it is ready again.
  void reloadBegins();
  void reloadEnds();

 private:
  /// Tells the manager, if one listens.
  void notify(std::string const& state) const;
  void feedWatchdog();
  void becomeReady();

  bool isListening_;
  bool isReady_ = false;
  std::string text_;
  /// Seconds from one sign of life to the next.
  double watchdogInterval_ = 0;
  Timer readiness_;
  Timer watchdog_;
};

}  // namespace Agent
