// Model files: families of supplies that are recognised beside those of the plug-in.
#pragma once

#include <string>
#include <string_view>

#include "agent/base/JsonValue.h"
#include "agent/models/Model.h"

namespace Agent {

/// What stands where a person has something to fill in.
inline constexpr std::string_view kToFillIn = "FILL_IN";

/// The text of a model file, which must be a regular file of bounded size, else a `Failure` is
/// thrown.
std::string readModelText(std::string const& file);

/// The models that `document` adds, each of them whole: keys that its rule can see, an FDL with
/// what every FDL has. `file` is what it was read from. Throws a `UsageError`, "models[1].keys[0]:
/// ...", for the first value that does not fit.
Models parseModels(JsonValue::Json const& document, std::string const& file);

}  // namespace Agent
