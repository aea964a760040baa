// A configuration file, in the format of the command-line library.
#include "agent/commands/ConfigFile.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <string_view>
#include <vector>

#include "agent/base/Error.h"
#include "agent/base/InputFile.h"
#include "agent/base/Text.h"

namespace Agent {

namespace {

/// A key and what it is set to.
struct Entry {
  std::string key;
  std::vector<std::string> values;
};

/// One entry of a file, over one line or, in an array, several.
struct Lines {
  unsigned number;
  std::string text;
};

/// Whether `text` begins an array that it does not end.
bool isOpen(std::string const& text) {
  std::size_t const equals = text.find('=');
  std::size_t const start =
      equals == std::string::npos ? equals : text.find_first_not_of(" \t", equals + 1);
  return start != std::string::npos && text[start] == '[' &&
         text.find(']', start) == std::string::npos;
}

std::vector<Lines> linesOf(std::string const& file) {
  constexpr std::uintmax_t kLongest = 1U << 20;
  checkInputFile(file, kLongest);
  std::ifstream in(file);
  std::vector<Lines> found;
  unsigned number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (!found.empty() && isOpen(found.back().text)) {
      found.back().text += '\n' + line.substr(0, line.find('#'));
    } else if (auto const start = line.find_first_not_of(" \t\r");
               start != std::string::npos && line[start] != '#' && line[start] != ';') {
      found.push_back({number, line});
    }
  }
  if (in.bad()) {
    throw Failure(file + ": cannot be read: " + systemError(errno));
  }
  return found;
}

Entry entryOf(std::string const& text) {
  std::istringstream in(text);
  std::vector<CLI::ConfigItem> const items = CLI::ConfigTOML().from_config(in);
  if (items.size() != 1 || !items[0].parents.empty() || isOpen(text)) {
    throw UsageError(inQuotes(text) + " is not KEY = VALUE");
  }
  return {items[0].name, items[0].inputs};
}

/// Sets the option; what the library or `check` says against it is a `UsageError`.
void set(CLI::Option& option, Entry const& entry, std::function<void()> const& check) {
  if (!option.empty() && option.get_multi_option_policy() != CLI::MultiOptionPolicy::TakeAll) {
    throw UsageError("the key is there twice");
  }
  bool const isSwitch = option.get_expected_min() == 0;
  try {
    for (std::string const& value : entry.values) {
      option.add_result(isSwitch ? option.get_flag_value(entry.key, value) : value);
    }
    option.run_callback();
  } catch (CLI::ConversionError const&) {
    throw UsageError("is true or false, not " + inQuotes(entry.values.front()));
  } catch (CLI::Error const& error) {
    throw UsageError(error.what());
  }
  check();
}

/// `text` without the `prefix` that it may have.
std::string_view without(std::string_view prefix, std::string_view text) {
  return text.substr(text.starts_with(prefix) ? prefix.size() : 0);
}

}  // namespace

void readConfigFile(std::string const& file, std::function<void(Parameters&)> const& addTo,
                    std::function<bool(std::string const& option)> const& isGiven,
                    std::function<void()> const& check) {
  CLI::App keys;
  keys.set_help_flag();
  Parameters parameters(keys);
  addTo(parameters);
  for (Lines const& lines : linesOf(file)) {
    std::string const place = file + ':' + std::to_string(lines.number) + ": ";
    std::string key;
    try {
      Entry const entry = entryOf(lines.text);
      key = oneLine(entry.key) + ": ";
      CLI::Option* const option = keys.get_option_no_throw("--" + entry.key);
      if (option == nullptr) {
        throw UsageError("there is no such key");
      }
      if (!isGiven("--" + entry.key)) {
        set(*option, entry, check);
      }
    } catch (UsageError const& error) {
      // What is said of an option begins with its name.
      throw UsageError(place + key + std::string(without("--" + key, error.what())));
    }
  }
}

}  // namespace Agent
