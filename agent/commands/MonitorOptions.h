// What psu-agent monitor is told to do.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "agent/publish/Publisher.h"
#include "agent/slots/WatchedSlots.h"

namespace Agent {

/// The command's options, as they were written.
struct MonitorOptions {
  /// Each `NAME=SOURCE`.
  std::vector<std::string> slots;
  double pollInterval = 1;
  double reviewInterval = 60;
  std::optional<double> duration;
  bool isJson = false;
  std::string record;
  std::string publish;
  double hold = Publishing{}.hold;
  bool isKept = false;
};

/// Makes `command` take the options.
void addMonitorOptions(CLI::App& command, MonitorOptions& options);
/// The slots to watch. Throws a `UsageError` for one that does not make sense, for a name that is
/// there twice, and as `parseSources`.
std::vector<SlotPlan> plansOf(MonitorOptions const& options);
/// How to publish, where that is wanted.
std::optional<Publishing> publishingOf(MonitorOptions const& options);

}  // namespace Agent
