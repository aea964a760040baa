// psu-agent monitor: slots that are watched until told otherwise.
#include "agent/commands/Command.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "agent/base/OutputReader.h"
#include "agent/commands/MonitorOptions.h"
#include "agent/slots/Loop.h"
#include "agent/slots/WatchedSlots.h"
#include "agent/transport/Timer.h"

namespace Agent {

namespace {

/// Runs `loop` until `duration` is over, a signal stops it, or nobody reads its lines any more.
void run(Loop& loop, ClockKind kind, std::optional<double> duration) {
  constexpr double kLongestUnseen = 0.5;
  Timer look([&look] { look.startIn(kLongestUnseen); });
  if (kind == ClockKind::steadyClock) {
    look.startIn(kLongestUnseen);
  }
  loop.run(duration.value_or(Loop::kForever), [] { return !hasReader(STDOUT_FILENO); });
}

Status monitor(MonitorOptions const& options, Globals const& globals) {
  std::vector<SlotPlan> const plans = plansOf(options);
  bool const isLive =
      std::ranges::any_of(plans, [](SlotPlan const& plan) { return plan.source.isLive(); });
  ClockKind const kind = isLive ? ClockKind::steadyClock : ClockKind::virtualClock;
  ignoreWriteSignals();
  Plugin const plugin(globals.library);
  Loop loop(kind);
  Reporting reporting{.isJson = options.isJson, .isLive = true};
  {
    std::optional<Publisher> publisher;
    if (auto const publishing = publishingOf(options)) {
      reporting.publisher = &publisher.emplace(*publishing, reporting.ledger);
    }
    std::optional<Recorder> recorder;
    WatchedSlots slots(plugin, loop, reporting);
    slots.plansAre(plans);
    if (!options.record.empty()) {
      reporting.recorder = &recorder.emplace(options.record);
    }
    if (!slots.isEmpty()) {
      run(loop, kind, options.duration);
    }
  }
  return reporting.ledger.status();
}

}  // namespace

Action prepareMonitor(CLI::App& command) {
  auto const options = std::make_shared<MonitorOptions>();
  addMonitorOptions(command, *options);
  return [options](Globals const& globals) { return monitor(*options, globals); };
}

}  // namespace Agent
