// What is said of a command line that makes no sense.
#include "agent/commands/Refusal.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>
#include <vector>

#include "agent/base/Error.h"
#include "agent/base/Text.h"
#include "agent/commands/Suggestion.h"

namespace Agent {

namespace {

constexpr std::string_view kOnlyPositionals = "--";

bool isOption(std::string_view argument) {
  return argument.size() > 1 && argument.starts_with('-') && argument != kOnlyPositionals;
}

/// " (did you mean NAME?)", or nothing.
std::string meant(std::string_view word, std::vector<std::string> const& names) {
  std::string const nearest = nearestOf(word, names);
  return nearest.empty() ? "" : " (did you mean " + nearest + "?)";
}

std::vector<std::string> optionNames(CLI::App const& program) {
  std::vector<std::string> names;
  for (CLI::App const* app : {&program, commandOf(program)}) {
    for (CLI::Option const* const option :
         app == nullptr ? std::vector<CLI::Option const*>() : app->get_options()) {
      if (option->nonpositional()) {
        names.push_back(option->get_name());
      }
    }
  }
  return names;
}

std::vector<std::string> commandNames(CLI::App const& program) {
  std::vector<std::string> names;
  for (CLI::App const* const command : program.get_subcommands({})) {
    // One without a group is for programs, and not shown.
    if (!command->get_group().empty()) {
      names.push_back(command->get_name());
    }
  }
  return names;
}

/// The first of `arguments` that nothing takes, or the first option among them; empty when there is
/// none.
std::string leftOver(CLI::App const& program, std::span<char const* const> arguments) {
  std::vector<std::string> const rest = program.remaining(true);
  std::string first;
  for (std::string_view const argument : arguments) {
    bool const isLeft = std::ranges::find(rest, argument) != rest.end();
    if (isLeft && isOption(argument)) {
      return std::string(argument);
    }
    if (isLeft && first.empty() && argument != kOnlyPositionals) {
      first = argument;
    }
  }
  return first;
}

/// The option that the library's text is about, which begins with its name, with dashes or without;
/// null when it is about none.
CLI::Option const* optionIn(CLI::App const& program, std::string const& text) {
  std::string name = text.substr(0, text.find_first_of(": "));
  name.insert(0, name.starts_with("--") ? "" : "--");
  CLI::App const* const command = commandOf(program);
  CLI::Option const* const found =
      command == nullptr ? nullptr : command->get_option_no_throw(name);
  return found != nullptr ? found : program.get_option_no_throw(name);
}

/// What is wrong with the number of the option's values.
std::string miscounted(CLI::Option const& option) {
  std::string const name = option.get_name();
  bool const isRepeated =
      option.count() > 1 && option.get_multi_option_policy() != CLI::MultiOptionPolicy::TakeAll;
  return name + (isRepeated ? " is given more than once" : " needs a value");
}

}  // namespace

CLI::App const* commandOf(CLI::App const& program) {
  auto const chosen = program.get_subcommands();
  return chosen.empty() ? nullptr : chosen.front();
}

std::string unknownCommand(CLI::App const& program, std::string const& name) {
  return "there is no command " + inQuotes(name) + meant(name, commandNames(program));
}

std::string refusalOf(CLI::App const& program, CLI::ParseError const& error,
                      std::span<char const* const> arguments) {
  CLI::App const* const command = commandOf(program);
  std::string text = error.what();
  std::string const left = leftOver(program, arguments);
  if (isOption(left)) {
    std::string const name = left.substr(0, left.find('='));
    return (command == nullptr ? "there is no option " : command->get_name() + " has no option ") +
           inQuotes(name) + meant(name, optionNames(program));
  }
  if (!left.empty() && command == nullptr) {
    return unknownCommand(program, left);
  }
  if (dynamic_cast<CLI::ArgumentMismatch const*>(&error) != nullptr) {
    if (CLI::Option const* const option = optionIn(program, text)) {
      return miscounted(*option);
    }
  }
  if (dynamic_cast<CLI::ConversionError const*>(&error) != nullptr) {
    // The library converts nothing but what a switch is set to.
    std::string_view const name = std::string_view(text).substr(text.find("--"));
    return std::string(name.substr(0, name.find(' '))) + " takes no value but true or false";
  }
  if (!left.empty()) {
    return inQuotes(left) + " is more than " + command->get_name() + " takes";
  }
  return text;
}

void checkValuesFollow(std::span<char const* const> arguments) {
  for (std::string_view const argument : arguments) {
    if (argument == kOnlyPositionals) {
      return;
    }
    if (argument.starts_with("--") && argument.find('=') == argument.size() - 1) {
      throw UsageError(std::string(argument.substr(0, argument.size() - 1)) + " needs a value");
    }
  }
}

}  // namespace Agent
