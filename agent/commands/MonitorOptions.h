// What psu-agent monitor is told to do.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/commands/Parameters.h"
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
  std::string incidents;
  bool isRedacted = false;
  std::string publish;
  std::string metrics;
  double hold = Publishing{}.hold;
  bool isKept = false;
};

/// Makes `command` take the options.
void addMonitorOptions(Parameters& command, MonitorOptions& options);
/// The options that `command` took, completed by those that are in the file `config` only. Throws
/// as `readConfigFile` and `checkTogether`.
MonitorOptions completed(MonitorOptions options, Parameters const& command,
                         std::string const& config);
/// The slots to watch. Throws a `UsageError` for one that does not make sense, and for a name or a
/// bus that is there twice.
std::vector<SlotPlan> plansOf(MonitorOptions const& options);
/// Throws a `UsageError` for options that make no sense together.
void checkTogether(MonitorOptions const& options);
/// Whether one of the slots answers in its own time, so that the steady clock is needed.
bool isLive(std::vector<SlotPlan> const& plans);
/// How to publish, where that is wanted.
std::optional<Publishing> publishingOf(MonitorOptions const& options);

}  // namespace Agent
