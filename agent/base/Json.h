// JSON as the program writes it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace Agent {

using Json = nlohmann::ordered_json;

/// `value` as one line. Bytes that are no UTF-8 (file names) are replaced.
std::string jsonLine(Json const& value);

}  // namespace Agent
