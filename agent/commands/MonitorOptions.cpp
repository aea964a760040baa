// What psu-agent monitor is told to do.
#include "agent/commands/MonitorOptions.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "agent/base/Error.h"
#include "agent/base/Text.h"
#include "agent/commands/Command.h"
#include "agent/commands/ConfigFile.h"
#include "agent/publish/SlotName.h"

namespace Agent {

void addMonitorOptions(Parameters& command, MonitorOptions& options) {
  command.add("--slot", options.slots, "A slot and its SOURCE (repeatable)")
      .repeatable("NAME=SOURCE");
  command.add("--poll-interval", options.pollInterval, "Seconds between polls or checks")
      .inSeconds()
      .shownAs("S [1]");
  command
      .add("--review-interval", options.reviewInterval,
           "Seconds after which a supply is read whole again")
      .inSeconds()
      .shownAs("S [60]");
  command.add("--duration", options.duration, "Seconds after which to end").inSeconds();
  command.addFlag("--json", options.isJson, "Print JSON lines instead");
  command
      .add("--record", options.record,
           "Record what happens, for replay:FILE; - is standard output, and nothing else there")
      .aPath("FILE");
  command
      .add("--incidents", options.incidents,
           "Record what happens around each incident, in files of DIR")
      .aPath("DIR");
  command.addFlag("--redact", options.isRedacted, "Record pseudonyms in place of serial numbers");
  command.add("--metrics", options.metrics, "Keep figures of the slots in FILE")
      .shownAs("FILE")
      .checkedBy([](std::string const& text) {
        bool const isFile = std::filesystem::path(text).has_filename();
        return isFile ? std::string() : inQuotes(text) + " names no file";
      });
  command
      .add("--publish", options.publish,
           "Keep DIR/NAME.fdl for each slot whose supply is identified")
      .aPath("DIR");
  command.add("--hold", options.hold, "Seconds for which a bus in trouble keeps what is published")
      .inSeconds(0)
      .shownAs("S [60]");
  command.addFlag("--keep", options.isKept, "Leave published files at the end, for the next run");
}

MonitorOptions completed(MonitorOptions options, Parameters const& command,
                         std::string const& config) {
  auto const read = [&config](MonitorOptions& into, auto const& isGiven) {
    readConfigFile(
        config, [&](Parameters& keys) { addMonitorOptions(keys, into); }, isGiven,
        [&] { plansOf(into); });
  };
  // What is given on the command line too must make sense all the same.
  MonitorOptions alone;
  read(alone, [](std::string const&) { return false; });
  read(options, [&](std::string const& option) { return command.has(option); });
  try {
    checkTogether(options);
  } catch (UsageError const& error) {
    throw UsageError(config + ": " + error.what());
  }
  return options;
}

std::vector<SlotPlan> plansOf(MonitorOptions const& options) {
  std::vector<std::string> names;
  std::vector<std::string> sources;
  std::set<std::string> taken;
  for (std::string const& text : options.slots) {
    std::size_t const equals = text.find('=');
    std::string const name = text.substr(0, equals);
    if (equals == std::string::npos || !isSlotName(name)) {
      throw UsageError("--slot: " + oneLine(text) +
                       " is not NAME=SOURCE with a NAME of letters, digits, '.', '_' and '-'");
    }
    if (isTakenName(name)) {
      throw UsageError("--slot: a slot cannot be called " + name + ": the name is taken");
    }
    if (!taken.insert(name).second) {
      throw UsageError("--slot: the slot " + name + " is named twice");
    }
    names.push_back(name);
    sources.push_back(text.substr(equals + 1));
  }
  std::vector<SlotPlan> plans;
  for (Source const& source : parseSources(sources)) {
    plans.push_back({.name = names[plans.size()],
                     .source = source,
                     .pollInterval = options.pollInterval,
                     .reviewInterval = options.reviewInterval});
  }
  return plans;
}

void checkTogether(MonitorOptions const& options) {
  if (options.slots.empty()) {
    throw UsageError("--slot: no slot is named");
  }
  if (options.isKept && options.publish.empty()) {
    throw UsageError("--keep: needs --publish");
  }
  if (!options.duration && !isLive(plansOf(options))) {
    throw UsageError("--duration: is needed where all slots are files and recordings");
  }
}

bool isLive(std::vector<SlotPlan> const& plans) {
  return std::ranges::any_of(plans, [](SlotPlan const& plan) { return plan.source.isLive(); });
}

std::optional<Publishing> publishingOf(MonitorOptions const& options) {
  return options.publish.empty()
             ? std::nullopt
             : std::optional(Publishing{.folder = options.publish,
                                        .hold = options.hold,
                                        .isKept = options.isKept,
                                        .repairInterval = options.pollInterval});
}

}  // namespace Agent
