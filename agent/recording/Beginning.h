// Where a slot's detection began, and what it knew then.
#pragma once

#include "agent/base/JsonObject.h"
#include "agent/base/JsonValue.h"
#include "host/detector/Policy.h"

namespace Agent {

/// The start of a detection of which transactions are recorded. Begun like this, with the same
/// answers at the same times, another identifier asks for the same and comes to the same verdicts.
struct Beginning {
  /// In seconds.
  double time = 0;
  PowerSupplyDetector::Timings timings;
  /// What was remembered of the detections before; nothing when it was the first one.
  PowerSupplyDetector::Memory memory;
};

/// Adds what a line `start` tells of it besides the time.
JsonObject& addBeginning(JsonObject& object, Beginning const& beginning);
/// What such a line tells. Throws a `UsageError` that begins with the path of what does not fit.
Beginning beginningFrom(JsonValue const& start);

}  // namespace Agent
