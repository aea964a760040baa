// What is said of a command line that makes no sense.
#pragma once

#include <span>
#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace Agent {

/// The command that `program` met; null before one.
CLI::App const* commandOf(CLI::App const& program);

/// That `program` has no command `name`, and which one may have been meant.
std::string unknownCommand(CLI::App const& program, std::string const& name);

/// What `error`, which `program` threw when it parsed `arguments` (the program's name is not among
/// them), says to a person: which argument does not fit, why, and what may have been meant.
std::string refusalOf(CLI::App const& program, CLI::ParseError const& error,
                      std::span<char const* const> arguments);

/// Throws a `UsageError` for an option that is written `--name=`, with nothing behind it: the next
/// argument would be taken for its value.
void checkValuesFollow(std::span<char const* const> arguments);

}  // namespace Agent
