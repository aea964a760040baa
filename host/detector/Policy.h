// What follows the end of a request: the policy of a slot, as pure functions.
#pragma once

#include <limits>
#include <optional>

#include "host/hardware/Supply.h"
#include "host/kex/base/Export.h"
#include "host/kex/base/Types.h"

namespace PowerSupplyDetector {

/// The timings of a slot, in seconds.
struct Timings {
  /// Between two polls or checks.
  double pollInterval = 1.0;
  /// From a positive poll to identification: a freshly inserted supply settles.
  double pollDelay = 0.2;
};

/// What a slot does next.
enum class Next : Kex::U8 {
  nothing,
  reset,       ///< detection starts over
  identify,    ///< the supply is read
  check,       ///< the supply is checked
  retryCheck,  ///< the check's transaction, which failed, is run again
};

/// Time after which the detection of a supply with a wrong checksum or an unsupported version is
/// repeated, in seconds: it doubles from the least to the most.
class KEX_API BackOff {
 public:
  /// Least and most interval.
  static constexpr double kLeast = 1.0;
  /// See `kLeast`.
  static constexpr double kMost = 10.0;

  /// When to repeat; infinity for never.
  double due() const { return due_; }
  /// Sets the next repetition, counted from `now`, and doubles the interval.
  void schedule(double now);
  /// No repetition, but the interval goes on growing.
  void taken() { due_ = std::numeric_limits<double>::infinity(); }

  bool operator==(BackOff const&) const = default;

 private:
  double due_ = std::numeric_limits<double>::infinity();
  double interval_ = kLeast;
};

/// What is remembered from one ending to the next.
struct Memory {
  BackOff backOff;
  /// Checks in a row that found another supply.
  unsigned mismatches = 0;
  /// When detection started over last.
  double lastReset = -std::numeric_limits<double>::infinity();

  bool operator==(Memory const&) const = default;
};

/// What is told of the supply.
enum class Told : Kex::U8 {
  nothing,
  ending,    ///< the verdict that the ending itself gives
  found,     ///< what identification found
  unstable,  ///< that what identification found does not stay
};

/// What follows an ending.
struct Move {
  Told told = Told::nothing;
  Next next = Next::nothing;
  /// When, in seconds of the slot's clock; a time that has passed means at once.
  double at = 0;
  Memory memory;

  bool operator==(Move const&) const = default;
};

/// When an ending happened, and what is known by then.
struct Situation {
  double now;
  Timings timings;
  Memory memory;
};

/// What a check found in the slot.
enum class Checked : Kex::U8 {
  gone,               ///< nothing, or nothing that answers in full
  same,               ///< the supply that was identified
  otherSerialNumber,  ///< another supply, or one that is not stable
  otherAreaHeader,    ///< the same, told by the header of its product info area
};

/// After a poll that found a supply or did not.
KEX_API Move afterPoll(bool isPresent, Situation const& situation);
/// After an identification with its verdict; none: it was given up.
KEX_API Move afterIdentify(std::optional<Hardware::PowerSupplySlot::Verdict> verdict,
                           Situation const& situation);
/// After a check; `isFirst`: what identification found is not told yet.
KEX_API Move afterCheck(Checked checked, bool isFirst, Situation const& situation);

}  // namespace PowerSupplyDetector
