// A configuration file, in the format of the command-line library.
#include "agent/commands/ConfigFile.h"

#include <CLI/CLI.hpp>
#include <algorithm>
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

constexpr char const* kBlanks = " \t\r";

/// `line` without the comment and the blanks at its end. A `#` in quotes begins no comment.
std::string_view withoutComment(std::string_view line) {
  char quote = '\0';
  std::size_t end = 0;
  for (; end < line.size() && (quote != '\0' || line[end] != '#'); ++end) {
    char const each = line[end];
    if (each == quote) {
      quote = '\0';
    } else if (quote == '\0' && (each == '"' || each == '\'')) {
      quote = each;
    }
  }
  line = line.substr(0, end);
  return line.substr(0, line.find_last_not_of(kBlanks) + 1);
}

/// Where the value of `text` begins; its end where there is none.
std::size_t valueOf(std::string const& text) {
  std::size_t const equals = text.find('=');
  return equals == std::string::npos
             ? text.size()
             : std::min(text.find_first_not_of(kBlanks, equals + 1), text.size());
}

/// Whether the value of `text` begins with one of `characters`.
bool hasValueLike(std::string const& text, std::string_view characters) {
  return characters.find(text.c_str()[valueOf(text)]) != std::string_view::npos;
}

constexpr std::string_view kQuotedOrArray = "\"'[";

/// Whether `text` begins an array that it does not end.
bool isOpen(std::string const& text) { return hasValueLike(text, "[") && !text.ends_with(']'); }

std::vector<Lines> linesOf(std::string const& file) {
  constexpr std::uintmax_t kLongest = 1U << 20;
  checkInputFile(file, kLongest);
  errno = 0;
  std::ifstream in(file);
  if (!in.is_open()) {
    throw Failure(file + ": cannot be read: " + systemError(errno));
  }
  std::vector<Lines> found;
  unsigned number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (!found.empty() && isOpen(found.back().text)) {
      found.back().text.append(" ").append(withoutComment(line));
    } else if (auto const start = line.find_first_not_of(kBlanks);
               start != std::string::npos && line[start] != '#' && line[start] != ';') {
      found.push_back(
          {number, hasValueLike(line, kQuotedOrArray) ? std::string(withoutComment(line)) : line});
    }
  }
  if (in.bad()) {
    throw Failure(file + ": cannot be read: " + systemError(errno));
  }
  return found;
}

Entry entryOf(std::string const& text) {
  CLI::ConfigTOML format;
  if (hasValueLike(text, kQuotedOrArray)) {
    // Comments are gone; the library would take a # in quotes for one.
    format.comment('\n');
  }
  std::istringstream in(text);
  std::vector<CLI::ConfigItem> const items = format.from_config(in);
  if (items.size() != 1 || !items[0].parents.empty() || isOpen(text)) {
    throw UsageError(inQuotes(text) + " is not KEY = VALUE");
  }
  return {items[0].name, items[0].inputs};
}

/// Sets the option; what the library or `check` says against it is a `UsageError`.
void set(CLI::Option& option, Entry const& entry, std::function<void()> const& check) {
  bool const isRepeatable = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
  if (!option.empty() && !isRepeatable) {
    throw UsageError("the key is there twice");
  }
  if (entry.values.empty()) {
    throw UsageError("has no value");
  }
  if (entry.values.size() > 1 && !isRepeatable) {
    throw UsageError("has more values than one");
  }
  bool const isSwitch = option.get_expected_min() == 0;
  for (std::string const& value : entry.values) {
    if (isSwitch && value != "true" && value != "false") {
      throw UsageError("is true or false, not " + inQuotes(value));
    }
    option.add_result(value);
  }
  try {
    option.run_callback();
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
