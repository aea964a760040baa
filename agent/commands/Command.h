// What the program's commands have in common, and their list.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <string_view>

#include "agent/base/ExitStatus.h"
#include "agent/models/ModelSet.h"

namespace Agent {

/// Options that hold for every command.
struct Globals {
  /// The plug-in's file.
  std::string library;
  ModelOptions models{};
};

/// A command's work. It may throw a `Failure` or a `UsageError`.
using Action = std::function<Status(Globals const&)>;

/// Adds to `command`, which the command line has named, what it takes. What is returned is done
/// when the command line chooses it. A command is one of these, in a file of its own, and its row
/// in CommandLine.cpp.
using Prepare = Action(CLI::App& command);

Prepare prepareIdentify;
Prepare prepareMonitor;
Prepare prepareSimulate;
Prepare prepareReport;
Prepare prepareDoctor;
Prepare prepareCall;
Prepare prepareTypes;
Prepare prepareModels;
Prepare prepareComplete;

/// What prepares the command of this name; null when there is none.
Prepare* preparationOf(std::string_view name);

/// Makes `option`, whose value `text` stands for in the help, one that may be given several times,
/// each time with one value.
CLI::Option& repeatable(CLI::Option& option, std::string const& text);
/// Refuses an empty value of `option`, which is the name of what `what` stands for.
CLI::Option& notEmpty(CLI::Option& option, std::string const& what);
/// Makes `option` the name of a file or folder, for which `text` stands; an empty one is refused.
CLI::Option& aPath(CLI::Option& option, std::string const& text);
/// Makes `option` a number of seconds from `least` to a hundred years, and returns it.
CLI::Option& inSeconds(CLI::Option& option, double least = 0.001);
/// Adds `--mfr-id`, what supplies that are simulated from files answer.
void addMfrIdOption(CLI::App& command, std::string& mfrId);

}  // namespace Agent
