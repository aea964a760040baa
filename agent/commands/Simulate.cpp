// psu-agent simulate: a scenario on virtual time.
#include "agent/commands/Command.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "agent/base/InputFile.h"
#include "agent/base/OutputReader.h"
#include "agent/base/Terminal.h"
#include "agent/publish/Publisher.h"
#include "agent/slots/Loop.h"
#include "agent/slots/Scenario.h"
#include "agent/slots/Source.h"
#include "agent/slots/WatchedSlot.h"
#include "agent/transport/FaultTransport.h"
#include "agent/transport/SimulatedBus.h"
#include "agent/transport/Timer.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

struct Options {
  bool isJson = false;
  bool isTranscript = false;
  std::string record;
  std::string incidents;
  bool isRedacted = false;
  std::string publish;
  std::string scenario;
};

/// Something that happens in a slot.
struct Event {
  double at;
  Act act;
  /// What is in the slot afterwards; null where that stays.
  ScenarioChange const* change = nullptr;
};

/// All that happens in a slot, in the order of the times.
std::vector<Event> eventsOf(ScenarioSlot const& story) {
  std::vector<Event> events;
  events.reserve(story.changes.size() + story.faults.size());
  for (ScenarioChange const& change : story.changes) {
    events.push_back({.at = change.at,
                      .act = change.supply ? Act{.action = "insert", .supply = change.supply->text}
                                           : Act{.action = "remove"},
                      .change = &change});
  }
  for (Fault const& fault : story.faults) {
    char const* const name = faultKinds()[static_cast<std::size_t>(fault.kind)].name;
    events.push_back({.at = fault.at, .act = {.action = name, .transactions = fault.transactions}});
  }
  std::ranges::stable_sort(events, {}, &Event::at);
  return events;
}

/// A slot of a scenario at work: its supplies come and go as the scenario says.
class Stage {
 public:
  Stage(ScenarioSlot const& story, Plugin const& plugin, Loop const& loop, Reporting& reporting)
      : story_(story),
        events_(eventsOf(story)),
        slot_(
            story.name, nameOf(story.supply),
            [&](auto onEnd) { return transport(loop, std::move(onEnd)); }, plugin, reporting),
        timer_([this] { happen(); }) {
    scheduleNext();
  }

 private:
  static std::optional<std::string> nameOf(std::optional<ScenarioSupply> const& supply) {
    return supply ? std::optional(supply->text) : std::nullopt;
  }

  Opening transport(Loop const& loop, OnEnd onEnd) {
    Opening supply = supplyTransport(loop, std::move(onEnd));
    auto faulty = std::make_unique<FaultTransport>(std::move(supply.transport));
    for (Fault const& fault : story_.faults) {
      faulty->faultQEnq(fault);
    }
    return {std::move(faulty), supply.beginning};
  }

  Opening supplyTransport(Loop const& loop, OnEnd onEnd) {
    if (story_.supply) {
      if (auto const* const recorded = std::get_if<RecordedSupply>(&story_.supply->kind)) {
        return Source("replay:" + recorded->target)
            .open({.mfrId = "", .post = loop.post(), .onEnd = std::move(onEnd)});
      }
    }
    auto bus = std::make_unique<SimulatedBus>();
    bus_ = bus.get();
    bus_->supplyIs(simulated(story_.supply));
    return bus;
  }

  static std::optional<SimulatedSupply> simulated(std::optional<ScenarioSupply> const& supply) {
    return supply ? std::optional(std::get<SimulatedSupply>(supply->kind)) : std::nullopt;
  }

  void happen() {
    Event const& now = events_[next_++];
    slot_.actIs(now.act);
    if (now.change != nullptr) {
      bus_->supplyIs(simulated(now.change->supply));
      if (now.act.supply) {
        slot_.sourceIs(now.act.supply);
      }
    }
    scheduleNext();
  }

  void scheduleNext() {
    if (next_ < events_.size()) {
      timer_.startAt(events_[next_].at);
    }
  }

  ScenarioSlot const& story_;
  std::vector<Event> events_;
  /// Owned by the slot's transport; null where a recording is played.
  SimulatedBus* bus_ = nullptr;
  WatchedSlot slot_;
  std::size_t next_ = 0;
  Timer timer_;
};

std::set<std::string> namesOf(Scenario const& scenario) {
  std::set<std::string> names;
  std::ranges::transform(scenario.slots, std::inserter(names, names.end()), &ScenarioSlot::name);
  return names;
}

Status simulate(Options const& options, Globals const& globals) {
  Scenario const scenario = readScenario(options.scenario);
  for (std::string const& file : scenario.files) {
    checkIsNotRead("--record", options.record, file);
  }
  ignoreWriteSignals();
  Plugin const plugin(globals.library);
  ModelSet const models(globals.models);
  Loop loop(ClockKind::virtualClock);
  Reporting reporting{.isJson = options.isJson, .isTranscript = options.isTranscript};
  {
    std::optional<Publisher> publisher;
    if (!options.publish.empty()) {
      reporting.publisher =
          &publisher.emplace(Publishing{.folder = options.publish}, reporting.ledger);
      publisher->slotsAre(namesOf(scenario));
    }
    std::optional<Recorder> recorder;
    if (!options.record.empty()) {
      reporting.recorder = &recorder.emplace(options.record);
    }
    Pseudonyms const pseudonyms = Pseudonyms::ofMachine();
    reporting.pseudonyms = options.isRedacted ? &pseudonyms : nullptr;
    std::optional<IncidentFolder> incidents;
    if (!options.incidents.empty()) {
      reporting.incidents = &incidents.emplace(options.incidents, IncidentFolder::Times::ofRun);
    }
    std::vector<std::unique_ptr<Stage>> stages;
    stages.reserve(scenario.slots.size());
    for (ScenarioSlot const& story : scenario.slots) {
      stages.push_back(std::make_unique<Stage>(story, plugin, loop, reporting));
    }
    loop.run(scenario.duration, [&] {
      progress([&] {
        return std::string(
            Kex::format("%.0f of %.0f s are simulated", loop.now(), scenario.duration).view());
      });
      return false;
    });
    eraseProgress();
  }
  reporting.ledger.add(loop.status());
  return reporting.ledger.status();
}

}  // namespace

Action prepareSimulate(Parameters& command) {
  auto const options = std::make_shared<Options>();
  command.addFlag("--transcript", options->isTranscript, "Print every bus transaction as well");
  command.addFlag("--json", options->isJson, "Print JSON lines instead");
  command
      .add("--record", options->record,
           "Record what happens, for replay:FILE; - is standard output, and nothing else there")
      .aPath("FILE");
  command
      .add("--incidents", options->incidents,
           "Record what happens around each incident, in files of DIR")
      .aPath("DIR");
  command.addFlag("--redact", options->isRedacted, "Record pseudonyms in place of serial numbers");
  command
      .add("--publish", options->publish,
           "Keep DIR/NAME.fdl for each slot whose supply is identified")
      .aPath("DIR");
  command.add("SCENARIO", options->scenario, "Scenario file (JSON)")
      .required()
      .notEmpty("SCENARIO");
  return [options](Globals const& globals) { return simulate(*options, globals); };
}

}  // namespace Agent
