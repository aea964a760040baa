// What a recording has of one slot.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/base/JsonValue.h"
#include "agent/recording/Beginning.h"
#include "agent/recording/TransactionLog.h"

namespace Agent {

/// A transaction of a recording, and where it stands in the file.
struct RecordedTransaction {
  TransactionRecord record;
  std::size_t line;
  /// Why it is not known how it ended; empty where it is.
  std::string unknown{};
  /// How often it was repeated, evenly until `until` (seconds), each time with the same answer.
  Kex::U32 repeats = 0;
  double until = 0;
};

/// Anything else that a recording tells of a slot: see docs/recordings.md.
struct RecordedEvent {
  /// In seconds, as that of a transaction.
  double time;
  /// `"supply"`, ...
  std::string event;
  /// The whole line, which has the event's keys and no other.
  JsonValue::Json object;
  std::size_t line;
};

/// What a recording has of a slot, each in the order of their times.
struct RecordedSlot {
  /// How the detection began that the transactions begin with; none where that is not known.
  std::optional<Beginning> beginning{};
  std::vector<RecordedTransaction> transactions{};
  std::vector<RecordedEvent> events{};
  /// What cannot be told of it, for a person.
  std::vector<std::string> doubts{};
  /// The time of the last line that tells of it, and where that stands.
  double lastTime = 0;
  std::size_t lastLine = 0;
};

}  // namespace Agent
