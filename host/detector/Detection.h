// What one detection remembers, and how its verdicts are reached.
#pragma once

#include <limits>
#include <memory>
#include <optional>
#include <span>

#include "host/hardware/Supply.h"
#include "host/hardware/VornRequest.h"

namespace PowerSupplyDetector {

using Hardware::PowerSupplySlot::Supply;
using Hardware::PowerSupplySlot::Verdict;

/// What was read of a supply's FRU records so far.
struct Findings {
  /// Why the common header was rejected, for a person.
  Kex::String8 headerFault;
  /// Format version of the product info area, as its header was last read.
  Kex::U8 areaVersion = 0;
  /// Whether the product info area was read; it is not when its format version is unknown.
  bool hasArea = false;
  std::optional<Hardware::PowerSupplySlot::ProductTexts> product;
};

/// Time after which the detection of a supply with a wrong checksum or an unsupported version is
/// repeated, in seconds: it doubles from the least to the most.
class BackOff {
 public:
  /// Least and most interval.
  static constexpr double kLeast = 1.0;
  /// See `kLeast`.
  static constexpr double kMost = 10.0;

  /// When to repeat; infinity for never.
  double due() const { return due_; }
  /// Sets the next repetition, counted from `now`, and doubles the interval.
  void schedule(double now);
  /// No repetition, and the least interval the next time.
  void clear() { *this = {}; }
  /// No repetition, but the interval goes on growing.
  void taken() { due_ = std::numeric_limits<double>::infinity(); }

 private:
  double due_ = std::numeric_limits<double>::infinity();
  double interval_ = kLeast;
};

/// What is remembered of a supply while it is in the slot.
struct Detection {
  /// What identification found, from its end up to the first check, after which it is published.
  std::unique_ptr<Supply> found;
  /// What the checks compare: the serial number and area header that identification ended with.
  Kex::String8 serialNum;
  Kex::String8 areaHeader;
  /// The text that answered the MFR_ID command.
  std::optional<Kex::String8> mfrId;
  /// Checks in a row that found another supply.
  unsigned mismatches = 0;
  BackOff backOff;
  double lastReset = -std::numeric_limits<double>::infinity();
  /// Whether a verdict was reached since the last reset.
  bool isConcluded = false;
  /// Transactions that had been started when the detection that is reported next began.
  Kex::U64 countedTransactions = 0;
};

/// The verdict of a negative poll, from the poll request as it ended.
Supply judgePoll(Hardware::VornRequest const& request, Findings const& findings,
                 std::optional<Kex::String8> const& mfrId);
/// The verdict of a positive identification; the descriptor is left to be named.
Supply judgeIdentification(Findings findings, bool hwError, Kex::String8 const& fdl);
/// "unreadable", after `what` had failed or was cut short.
Supply unreadable(char const* what, Hardware::VornRequest const& request);

/// Whether the request is loaded with a lone read: the MFR_ID, not FRU data.
bool isLoneRead(Hardware::VornRequest const& request);
/// The text that a block holds, whatever its count byte says.
Kex::String8 blockText(std::span<Kex::U8 const> block);

}  // namespace PowerSupplyDetector
