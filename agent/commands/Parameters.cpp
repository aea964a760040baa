// What a command takes: its options, its switches, and what stands by itself.
#include "agent/commands/Parameters.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <system_error>
#include <utility>

#include "agent/base/Text.h"
#include "host/kex/base/Format.h"

namespace Agent {

Parameter Parameter::shownAs(std::string const& text) const {
  option_->option_text(text);
  return *this;
}

Parameter Parameter::required() const {
  option_->required();
  return *this;
}

Parameter Parameter::repeatable(std::string const& text) const {
  option_->expected(1)->take_all()->allow_extra_args(false);
  return shownAs(text + " ...");
}

Parameter Parameter::excludes(Parameter other) const {
  option_->excludes(other.option_);
  return *this;
}

Parameter Parameter::checkedBy(std::function<std::string(std::string const&)> complaint) const {
  option_->check(std::move(complaint));
  return *this;
}

Parameter Parameter::notEmpty(std::string const& what) const {
  return checkedBy([what](std::string const& name) {
    return name.empty() ? "the name of a " + what + " must not be empty" : std::string();
  });
}

Parameter Parameter::aPath(std::string const& text) const { return shownAs(text).notEmpty(text); }

Parameter Parameter::inSeconds(double least) const {
  constexpr double kMost = 3.2e9;  // a hundred years
  return shownAs("S").checkedBy([least](std::string const& text) {
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

Parameter Parameters::add(char const* name, std::string& value, char const* purpose) {
  return Parameter(*command_.add_option(name, value, purpose));
}

Parameter Parameters::add(char const* name, std::optional<std::string>& value,
                          char const* purpose) {
  return Parameter(*command_.add_option(name, value, purpose));
}

Parameter Parameters::add(char const* name, std::vector<std::string>& values, char const* purpose) {
  return Parameter(*command_.add_option(name, values, purpose));
}

Parameter Parameters::add(char const* name, double& value, char const* purpose) {
  return Parameter(*command_.add_option(name, value, purpose));
}

Parameter Parameters::add(char const* name, std::optional<double>& value, char const* purpose) {
  return Parameter(*command_.add_option(name, value, purpose));
}

void Parameters::addHelp() { command_.set_help_flag("-h,--help", "Print this help and end"); }

Parameter Parameters::addFlag(char const* name, bool& value, char const* purpose) {
  return Parameter(*command_.add_flag(name, value, purpose));
}

bool Parameters::has(std::string const& name) const { return command_.count(name) != 0; }

}  // namespace Agent
