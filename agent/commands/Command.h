// What the program's commands have in common, and their list.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "agent/base/ExitStatus.h"
#include "agent/commands/Parameters.h"
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
using Prepare = Action(Parameters& command);

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

/// Adds `--mfr-id`, what supplies that are simulated from files answer.
void addMfrIdOption(Parameters& command, std::string& mfrId);

}  // namespace Agent
