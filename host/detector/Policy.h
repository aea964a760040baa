// What follows the end of a request: the policy of a slot, as pure functions.
#pragma once

#include <limits>
#include <optional>
#include <variant>

#include "host/hardware/Supply.h"
#include "host/kex/base/Export.h"
#include "host/kex/base/Types.h"

namespace PowerSupplyDetector {

using Hardware::PowerSupplySlot::Verdict;

/// The timings of a slot, in seconds; each is finite and at least `kLeast`.
struct Timings {
  /// A slot that asked more often would do nothing else.
  static constexpr double kLeast = 0.001;

  /// Between two polls or checks.
  double pollInterval = 1.0;
  /// From a positive poll to identification: a freshly inserted supply settles.
  double pollDelay = 0.2;
  /// From the first check of a supply to the next time that it is read whole: a check can only tell
  /// what it compares.
  double reviewInterval = 60.0;
  /// Of the detection of a supply with a wrong checksum or an unsupported version the first
  /// repetition, and the longest: the interval doubles from one to the next.
  double leastRepetition = 1.0;
  /// See `leastRepetition`.
  double mostRepetition = 10.0;
  /// The most that the review interval is for a supply without a serial number to compare.
  static constexpr double kMostWithoutSerialNumber = 5.0;

  bool operator==(Timings const&) const = default;
};

/// What a slot does next.
enum class Next : Kex::U8 {
  nothing,
  reset,       ///< detection starts over
  identify,    ///< the supply is read
  check,       ///< the supply is checked
  retryCheck,  ///< the check's transaction, which failed, is run again
};

/// What a detection came to, as far as two of them are compared.
struct Outcome {
  Verdict verdict = Verdict::absent;
  /// A digest of the texts that nobody knows: of a supply that no descriptor recognises, or of its
  /// manufacturer. 0 for other verdicts.
  Kex::U32 texts = 0;

  bool operator==(Outcome const&) const = default;
};

/// Time after which the detection of a supply with a wrong checksum or an unsupported version is
/// repeated, in seconds.
class KEX_API BackOff {
 public:
  BackOff() = default;
  /// No repetition is scheduled; the last interval was of so many seconds.
  explicit BackOff(double interval) : interval_(interval) {}

  /// When to repeat; infinity for never.
  double due() const { return due_; }
  /// From when it was scheduled last until then; 0 before.
  double interval() const { return interval_; }
  /// Sets the next repetition, counted from `now`, after twice the interval.
  void schedule(double now, Timings const& timings);
  /// No repetition, but the interval goes on growing.
  void taken() { due_ = std::numeric_limits<double>::infinity(); }

  bool operator==(BackOff const&) const = default;

 private:
  double due_ = std::numeric_limits<double>::infinity();
  double interval_ = 0;
};

/// What is remembered from one ending to the next.
struct Memory {
  BackOff backOff;
  /// When detection started over last.
  double lastReset = -std::numeric_limits<double>::infinity();
  /// When the first check of the supply ended; none before it.
  std::optional<double> firstCheck;
  /// What was told last.
  std::optional<Outcome> told;
  /// What the last detection came to, if it takes another one of the same to tell it.
  std::optional<Outcome> unconfirmed;
  /// Checks in a row that found another supply than identification; 2 stands for more.
  Kex::U8 mismatches = 0;

  bool operator==(Memory const&) const = default;
};

/// When an ending happened, and what is known by then.
struct Situation {
  double now = 0;
  Timings timings;
  Memory memory;

  bool operator==(Situation const&) const = default;
};

/// A poll ended.
struct PollEnding {
  /// What the poll came to; none: a supply that can be identified is there.
  std::optional<Outcome> outcome;
};

/// An identification ended.
struct IdentifyEnding {
  /// What identification found, or that it was given up.
  Outcome outcome;
  bool isComplete = false;
};

/// What a check found in the slot.
enum class Checked : Kex::U8 {
  gone,               ///< nothing, or nothing that answers in full
  same,               ///< the supply that was identified
  otherSerialNumber,  ///< another supply, or one that is not stable
  otherAreaHeader,    ///< the same, told by the header of its product info area
};

/// A check ended.
struct CheckEnding {
  Checked checked = Checked::gone;
  /// Whether it is the first one after identification, which is not told yet.
  bool isFirst = false;
  /// Whether a transaction of it failed before the one that ended it.
  bool hadFailures = false;
  /// Whether the supply has a serial number that a check can compare.
  bool hasSerialNumber = false;
  /// What identification found.
  Outcome found;
};

/// What ended, and how; nothing before the first ending.
using Ending = std::variant<std::monostate, PollEnding, IdentifyEnding, CheckEnding>;

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

KEX_API Move afterPoll(PollEnding const& ending, Situation const& situation);
KEX_API Move afterIdentify(IdentifyEnding const& ending, Situation const& situation);
KEX_API Move afterCheck(CheckEnding const& ending, Situation const& situation);
/// The one of these that `ending` asks for. Asked again with other timings it tells what would have
/// followed with these.
KEX_API Move after(Ending const& ending, Situation const& situation);

/// When detection may start over at the earliest: never twice within one poll interval.
KEX_API double earliestReset(Situation const& situation);

}  // namespace PowerSupplyDetector
