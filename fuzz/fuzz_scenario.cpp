// Fuzzes the scenario reader: a scenario, or a refusal that names the place.
#include <string_view>

#include "agent/base/Error.h"
#include "agent/slots/Scenario.h"
#include "fuzz/FuzzInput.h"

namespace {

void checkMessage(std::string_view message) {
  Fuzz::require(!message.empty() && message.find('\n') == std::string_view::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const text(data, data + size);
  try {
    Agent::Scenario const scenario = Agent::parseScenario(text, PSU_SAMPLES);
    Fuzz::require(scenario.duration >= 0 && !scenario.slots.empty());
    for (Agent::ScenarioSlot const& slot : scenario.slots) {
      double earliest = 0;
      for (Agent::ScenarioChange const& change : slot.changes) {
        Fuzz::require(change.at >= earliest && change.at <= scenario.duration);
        earliest = change.at;
      }
    }
  } catch (Agent::UsageError const& error) {
    checkMessage(error.what());
  } catch (Agent::Failure const& error) {
    // An image that is not there.
    checkMessage(error.what());
  }
  return 0;
}
