// What every FDL has.
#include "agent/models/FdlCheck.h"

#include <algorithm>
#include <vector>

#include "agent/base/Text.h"

namespace Agent {

namespace {

constexpr std::string_view kFirstLine = "FruFactoryIds: PowerSupply";

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    std::size_t const length = std::min(text.find('\n'), text.size() - 1);
    lines.push_back(text.substr(0, text[length] == '\n' ? length : length + 1));
    text.remove_prefix(length + 1);
  }
  return lines;
}

std::string_view withoutBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// Whether `value` is a text in quotes that says something.
bool isText(std::string_view value) {
  return value.size() > 2 && value.front() == '\'' && value.find('\'', 1) == value.size() - 1;
}

/// Whether `value` is a whole number above 0.
bool isNumber(std::string_view value) {
  return !value.empty() && value.find_first_not_of("0123456789") == std::string_view::npos &&
         value.find_first_not_of('0') != std::string_view::npos;
}

/// The assigned value, without blanks around it.
std::string_view valueIn(std::string_view line) {
  return withoutBlanks(line.substr(line.find('=') + 1));
}

}  // namespace

bool assigns(std::string_view line, std::string_view attribute) {
  return line.starts_with(attribute) &&
         withoutBlanks(line.substr(attribute.size())).starts_with('=');
}

std::optional<std::string> fdlFault(std::string_view fdl) {
  auto const lines = linesOf(fdl);
  if (lines.empty() || lines.front() != kFirstLine) {
    return "does not begin with the line " + inQuotes(kFirstLine);
  }
  for (std::string_view const attribute : kAssigned) {
    std::string const name(attribute);
    auto const isIts = [&](std::string_view line) { return assigns(line, attribute); };
    auto const line = std::ranges::find_if(lines, isIts);
    if (std::ranges::count_if(lines, isIts) != 1) {
      return (line == lines.end() ? "has no line " : "has more than one line ") + name + " = ...";
    }
    bool const isCapacity = attribute == "fru.capacity";
    if (!(isCapacity ? isNumber(valueIn(*line)) : isText(valueIn(*line)))) {
      return "assigns " + inQuotes(valueIn(*line)) + " to " + name + ", which is " +
             (isCapacity ? "a whole number of watts" : "a text in single quotes");
    }
  }
  auto const fans = std::ranges::count_if(lines, [](std::string_view line) {
    return line.find("fru.newFan(") != std::string_view::npos;
  });
  if (fans != 1) {
    return "makes " + std::to_string(fans) + " fans with fru.newFan(, where a supply has one";
  }
  return std::nullopt;
}

}  // namespace Agent
