// Whether a slot's verdict changes too often for a line each time.
#pragma once

#include <deque>
#include <functional>
#include <string>

#include "agent/transport/Timer.h"

namespace Agent {

/// Counts the changes of a slot's verdict. After more than `kMost` within `kWindow` the slot is
/// unsteady: that is told once, changes are summed up every `kSummary`, until there was none for
/// `kWindow`.
class Steadiness {
 public:
  static constexpr std::size_t kMost = 6;
  /// In seconds, as `kSummary`.
  static constexpr double kWindow = 600;
  static constexpr double kSummary = 60;

  /// `tell` is called with what there is to tell of an unsteady slot, and `onSteady` when it is
  /// steady again.
  Steadiness(std::function<void(std::string const& text)> tell, std::function<void()> onSteady);

  /// The verdict has changed.
  void change();
  bool isUnsteady() const { return isUnsteady_; }

 private:
  void handleTime();
  void forgetOld();
  /// Sets the timer for the next summary, or for the end of trouble where that comes first.
  void schedule();

  std::function<void(std::string const&)> tell_;
  std::function<void()> onSteady_;
  /// When the verdict changed, of the last `kWindow`.
  std::deque<double> changes_;
  unsigned sinceSummary_ = 0;
  bool isUnsteady_ = false;
  Timer timer_;
};

}  // namespace Agent
