// What a recording tells of a slot besides its transactions, put into its lane.
#pragma once

#include <string>

#include "agent/page/Lane.h"
#include "agent/recording/RecordedSlot.h"

namespace Agent {

/// Adds to `lane` the verdicts, the acts and why the slot's source ended. Whether there was a
/// verdict. Throws a `Failure` that begins with `file` and the line for a value that does not fit.
bool tellEvents(std::string const& file, RecordedSlot const& recorded, Lane& lane);

}  // namespace Agent
