// What one detection remembers, and how its verdicts are reached.
#pragma once

#include <memory>
#include <optional>
#include <span>

#include "host/detector/Policy.h"
#include "host/hardware/Supply.h"
#include "host/hardware/VornRequest.h"

namespace PowerSupplyDetector {

using Hardware::PowerSupplySlot::Supply;

/// What was read of a supply's FRU records so far.
struct Findings {
  /// Why the common header was rejected, for a person.
  Kex::String8 headerFault;
  /// Why the product info area, or its header, was rejected, for a person.
  Kex::String8 areaFault;
  /// Whether the product info area was read; it is not when its format version is unknown.
  bool hasArea = false;
  Kex::Ptr<Ipmi::ProductInfoArea const> product;
};

/// What is remembered of a supply while it is in the slot.
struct Detection {
  /// What identification found, from its end up to the first check, after which it is published.
  std::unique_ptr<Supply> found;
  /// What the checks compare: the serial number and area header that identification ended with.
  Kex::String8 serialNum;
  Kex::String8 areaHeader;
  /// Whether a check can compare the serial number.
  bool isNumbered = false;
  /// The text that answered the MFR_ID command.
  std::optional<Kex::String8> mfrId;
  Memory memory;
  /// What ended last, and in which situation: asked again when a timing changes.
  Ending ending;
  Situation then;
  /// Whether a transaction of the check that is under way has failed.
  bool hadFailures = false;
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
/// What is told of a supply that checks find changed again and again.
Supply unstable(Supply found, Checked checked);
/// What two detections are compared by.
KEX_API Outcome outcomeOf(Supply const& supply);
/// Whether a check can compare the serial number: there is one, and it is not blank.
KEX_API bool hasSerialNumber(Kex::String8 const& serialNum);
/// "unreadable", after `what` had failed or was cut short.
Supply unreadable(char const* what, Hardware::VornRequest const& request);

/// Whether the request is loaded with a lone read: the MFR_ID, not FRU data.
bool isLoneRead(Hardware::VornRequest const& request);
/// The text that a block holds, whatever its count byte says.
Kex::String8 blockText(std::span<Kex::U8 const> block);

}  // namespace PowerSupplyDetector
