// JSON as the program writes it.
#include "agent/base/Json.h"

namespace Agent {

std::string jsonLine(Json const& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace Agent
