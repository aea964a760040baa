// What the program's commands have in common.
#include "agent/commands/Command.h"

#include <charconv>
#include <system_error>

#include "agent/base/Text.h"
#include "agent/transport/SimulatedSupply.h"
#include "host/kex/base/Format.h"

namespace Agent {

CLI::Option& repeatable(CLI::Option& option, std::string const& text) {
  return *option.option_text(text + " ...")->expected(1)->take_all()->allow_extra_args(false);
}

CLI::Option& notEmpty(CLI::Option& option, std::string const& what) {
  return *option.check([what](std::string const& name) {
    return name.empty() ? "the name of a " + what + " must not be empty" : std::string();
  });
}

CLI::Option& aPath(CLI::Option& option, std::string const& text) {
  return notEmpty(*option.option_text(text), text);
}

CLI::Option& inSeconds(CLI::Option& option, double least) {
  constexpr double kMost = 3.2e9;  // a hundred years
  return *option.option_text("S")->check([least](std::string const& text) {
    double seconds = 0;
    char const* const end = text.data() + text.size();
    auto const [stop, error] = std::from_chars(text.data(), end, seconds);
    // Written so that NaN does not pass.
    bool const fits = error == std::errc() && stop == end && seconds >= least && seconds <= kMost;
    return fits ? std::string()
                : std::string(Kex::format("%s is not a number of seconds from %.15g to %.15g",
                                          inQuotes(text).c_str(), least, kMost)
                                  .view());
  });
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
