// What the program's commands have in common.
#include "agent/commands/Command.h"

#include <charconv>
#include <cmath>

#include "agent/base/Text.h"
#include "agent/transport/SimulatedSupply.h"
#include "host/kex/base/Format.h"

namespace Agent {

CLI::Option& addSecondsOption(CLI::App& command, std::string const& name,
                              std::function<void(double)> const& use, std::string const& meaning,
                              double least) {
  constexpr double kMost = 3.2e9;  // a hundred years
  return *command
              .add_option_function<std::string>(
                  name,
                  [=](std::string const& text) {
                    double seconds = 0;
                    auto const [end, error] =
                        std::from_chars(text.data(), text.data() + text.size(), seconds);
                    // Written so that NaN does not pass.
                    bool const fits = seconds >= least && seconds <= kMost;
                    if (error != std::errc() || end != text.data() + text.size() || !fits) {
                      throw CLI::ValidationError(
                          name, Kex::format("%s is not a number of seconds from %g to %g",
                                            inQuotes(text).c_str(), least, kMost)
                                    .charPtr());
                    }
                    use(seconds);
                  },
                  meaning)
              ->option_text("S");
}

void addMfrIdOption(CLI::App& command, std::string& mfrId) {
  command.add_option("--mfr-id", mfrId, "MFR_ID that supplies simulated from files answer")
      ->option_text("TEXT")
      ->check([](std::string const& text) {
        bool const fits = !text.empty() && text.size() <= SimulatedSupply::kLongestMfrId;
        return fits ? std::string() : inQuotes(text) + " has not 1 to 32 bytes";
      });
}

}  // namespace Agent
