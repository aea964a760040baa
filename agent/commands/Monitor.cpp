// psu-agent monitor: slots that are watched until told otherwise.
#include "agent/commands/Command.h"

#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "agent/base/Error.h"
#include "agent/base/Text.h"
#include "agent/slots/Loop.h"
#include "agent/slots/Source.h"
#include "agent/slots/WatchedSlot.h"

namespace Agent {

namespace {

struct Options {
  std::vector<std::string> slots;
  double pollInterval = 1.0;
  double reviewInterval = 60.0;
  std::optional<double> duration;
  bool isJson = false;
  std::string mfrId = "EMERSON";
  std::string publish;
  std::string record;
};

/// The slots' names, and their sources in the same order.
struct Slots {
  std::vector<std::string> names;
  std::vector<Source> sources;
};

Slots parseSlots(std::vector<std::string> const& texts) {
  std::vector<std::string> names;
  std::vector<std::string> sources;
  std::set<std::string> taken;
  for (std::string const& text : texts) {
    std::size_t const equals = text.find('=');
    std::string const name = text.substr(0, equals);
    if (equals == std::string::npos || !isSlotName(name)) {
      throw UsageError("--slot: " + oneLine(text) +
                       " is not NAME=SOURCE with a NAME of letters, digits, '.', '_' and '-'");
    }
    if (!taken.insert(name).second) {
      throw UsageError("--slot: the slot " + name + " is named twice");
    }
    names.push_back(name);
    sources.push_back(text.substr(equals + 1));
  }
  return {.names = names, .sources = parseSources(sources)};
}

Status monitor(Options const& options, Globals const& globals) {
  Slots const slots = parseSlots(options.slots);
  bool const isLive = anyLive(slots.sources);
  Plugin const plugin(globals.library);
  std::optional<Publisher> publisher;
  if (!options.publish.empty()) {
    publisher.emplace(options.publish);
  }
  Loop loop(isLive ? ClockKind::steadyClock : ClockKind::virtualClock);
  Reporting reporting{
      .isJson = options.isJson, .isLive = true, .publisher = publisher ? &*publisher : nullptr};
  std::optional<Recorder> recorder;
  std::vector<std::unique_ptr<WatchedSlot>> watched;
  for (std::size_t i = 0; i < slots.names.size(); ++i) {
    Source const& source = slots.sources[i];
    auto const open = [&](auto onEnd) {
      return source.open({.mfrId = options.mfrId, .post = loop.post(), .onEnd = std::move(onEnd)});
    };
    reporting.ledger.attempt([&] {
      watched.push_back(
          std::make_unique<WatchedSlot>(slots.names[i], source.text(), open, plugin, reporting));
      watched.back()->slot().pollIntervalIs(options.pollInterval);
      watched.back()->slot().reviewIntervalIs(options.reviewInterval);
    });
  }
  if (!options.record.empty()) {
    reporting.recorder = &recorder.emplace(options.record);
  }
  if (!watched.empty()) {
    loop.run(options.duration.value_or(Loop::kForever), [] { return false; });
  }
  return reporting.ledger.status();
}

}  // namespace

Action prepareMonitor(CLI::App& command) {
  auto const options = std::make_shared<Options>();
  command.add_option("--slot", options->slots, "A slot and its SOURCE (repeatable)")
      ->option_text("NAME=SOURCE ...")
      ->expected(1)
      ->take_all()
      ->required();
  inSeconds(*command.add_option("--poll-interval", options->pollInterval,
                                "Seconds between polls or checks"))
      .option_text("S [1]");
  inSeconds(*command.add_option("--review-interval", options->reviewInterval,
                                "Seconds after which a supply is read whole again"))
      .option_text("S [60]");
  inSeconds(*command.add_option("--duration", options->duration, "Seconds after which to end"));
  command.add_flag("--json", options->isJson, "Print JSON lines instead");
  command.add_option("--record", options->record, "Record what happens, for replay:FILE")
      ->option_text("FILE");
  command
      .add_option("--publish", options->publish,
                  "Keep DIR/NAME.fdl for each slot whose supply is identified")
      ->option_text("DIR");
  return [options](Globals const& globals) { return monitor(*options, globals); };
}

}  // namespace Agent
