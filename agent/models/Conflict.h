// Whether a model would take another one's supplies.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/models/ModelDescriptor.h"
#include "agent/models/Question.h"

namespace Agent {

/// What keeps the model of `added` from standing beside `others`: its name, a key of its own that
/// one of them accepts in either field, with or without blanks around it, or a key of theirs that
/// it accepts. It begins with the path of the value in the model's file. None where it fits.
std::optional<std::string> conflict(Kex::Ptr<ModelDescriptor> const& added,
                                    std::vector<DescriptorPtr> const& others);

}  // namespace Agent
