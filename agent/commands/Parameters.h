// What a command takes: its options, its switches, and what stands by itself.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

// The command-line library is a large one; only who looks into its objects reads it.
namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Agent {

/// Something that a command takes. The command has it; this tells which it is.
class Parameter {
 public:
  explicit Parameter(CLI::Option& option) : option_(&option) {}

  /// `text` stands for its value in the help.
  Parameter shownAs(std::string const& text) const;
  /// It must be there.
  Parameter required() const;
  /// It may be given several times, each time with one value, for which `text` stands.
  Parameter repeatable(std::string const& text) const;
  /// `other` must not be there as well.
  Parameter excludes(Parameter other) const;
  /// Refuses each value of which `complaint` says anything.
  Parameter checkedBy(std::function<std::string(std::string const& value)> complaint) const;
  /// It is the name of what `what` stands for: an empty one is refused.
  Parameter notEmpty(std::string const& what) const;
  /// It is the name of a file or folder, for which `text` stands; an empty one is refused.
  Parameter aPath(std::string const& text) const;
  /// It is a number of seconds from `least` to a hundred years.
  Parameter inSeconds(double least = 0.001) const;

 private:
  CLI::Option* option_;
};

/// All that a command takes. A name is one or several, separated by commas: `--long`, `-s`, or one
/// without dashes for what stands by itself. Values are put where they are wanted, which must
/// outlive the command line, when it is read.
class Parameters {
 public:
  explicit Parameters(CLI::App& command) : command_(command) {}

  Parameter add(char const* name, std::string& value, char const* purpose);
  Parameter add(char const* name, std::optional<std::string>& value, char const* purpose);
  Parameter add(char const* name, std::vector<std::string>& values, char const* purpose);
  Parameter add(char const* name, double& value, char const* purpose);
  Parameter add(char const* name, std::optional<double>& value, char const* purpose);
  /// The switch that asks for help.
  void addHelp();
  /// A switch.
  Parameter addFlag(char const* name, bool& value, char const* purpose);

  /// Whether the command line has the option `name`.
  bool has(std::string const& name) const;
  /// The command itself.
  CLI::App& command() const { return command_; }

 private:
  CLI::App& command_;
};

}  // namespace Agent
