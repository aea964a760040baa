// What the program's commands have in common.
#include "agent/commands/Command.h"

#include "agent/base/Text.h"
#include "agent/transport/SimulatedSupply.h"

namespace Agent {

void addMfrIdOption(Parameters& command, std::string& mfrId) {
  command.add("--mfr-id", mfrId, "MFR_ID that supplies simulated from files answer")
      .shownAs("TEXT")
      .checkedBy([](std::string const& text) {
        bool const fits = !text.empty() && text.size() <= SimulatedSupply::kLongestMfrId;
        return fits ? std::string() : inQuotes(text) + " has not 1 to 32 bytes";
      });
}

}  // namespace Agent
