// What the program calls the outcome of a detection.
#pragma once

#include "host/hardware/Supply.h"

namespace Agent {

using Hardware::PowerSupplySlot::Supply;
using Hardware::PowerSupplySlot::Verdict;

}  // namespace Agent
