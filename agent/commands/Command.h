// What the program's commands have in common.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "agent/base/ExitStatus.h"

namespace Agent {

/// Options that hold for every command.
struct Globals {
  /// The plug-in's file.
  std::string library;
};

/// A command's work. It may throw a `Failure` or a `UsageError`.
using Action = std::function<Status(Globals const&)>;

/// Adds a command to the program. When the command line chooses it, `action` becomes its work.
using AddCommand = void (*)(CLI::App& program, Action& action);

}  // namespace Agent
