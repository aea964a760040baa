// psu-agent monitor: slots that are watched until told otherwise.
#include "agent/commands/Command.h"

#include <unistd.h>

#include <csignal>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>

#include "agent/base/Error.h"
#include "agent/base/InputFile.h"
#include "agent/base/Journal.h"
#include "agent/base/OutputReader.h"
#include "agent/commands/MonitorOptions.h"
#include "agent/publish/MetricsFile.h"
#include "agent/service/Service.h"
#include "agent/slots/Loop.h"
#include "agent/slots/WatchedSlots.h"
#include "agent/transport/Timer.h"

namespace Agent {

namespace {

struct CommandLine {
  MonitorOptions options;
  std::string config;
  bool isCheck = false;
};

/// Gives the options as they stand in the configuration file now, if there is one.
using Read = std::function<MonitorOptions()>;

/// The command at work.
class Monitor {
 public:
  /// All that is given must outlive it.
  Monitor(MonitorOptions const& options, Plugin const& plugin, ModelSet& models, Loop& loop,
          Reporting& reporting)
      : options_(options),
        models_(models),
        loop_(loop),
        reporting_(reporting),
        slots_(plugin, loop, reporting) {
    if (auto const publishing = publishingOf(options_)) {
      reporting_.publisher = &publisher_.emplace(*publishing, reporting_.ledger);
    }
    if (!options_.metrics.empty()) {
      reporting_.meter = &meter_;
    }
    if (options_.isRedacted) {
      reporting_.pseudonyms = &pseudonyms_.emplace(Pseudonyms::ofMachine());
    }
    if (!options_.incidents.empty()) {
      bool const isLive = loop_.kind() == ClockKind::steadyClock;
      reporting_.incidents = &incidents_.emplace(
          options_.incidents, isLive ? IncidentFolder::Times::ofDay : IncidentFolder::Times::ofRun);
    }
    reporting_.onChange = [this] { tellService(); };
    slots_.plansAre(plansOf(options_));
    if (reporting_.meter != nullptr) {
      metrics_.emplace(options_.metrics, meter_, reporting_.publisher, reporting_.ledger);
    }
    if (!options_.record.empty()) {
      reporting_.recorder = &recorder_.emplace(options_.record);
    }
    tellService();
  }

  /// Runs until the duration is over, a signal ends the loop, nobody reads the lines any more, or
  /// the service manager is to start it anew.
  void run() {
    constexpr double kLongestUnseen = 0.5;
    Timer look([&look] { look.startIn(kLongestUnseen); });
    if (loop_.kind() == ClockKind::steadyClock) {
      look.startIn(kLongestUnseen);
    }
    // The journal may be restarted under its readers.
    bool const isRead = !isJournal(STDOUT_FILENO);
    if (!slots_.isEmpty()) {
      loop_.run(options_.duration.value_or(Loop::kForever), [this, isRead] {
        return (isRead && !hasReader(STDOUT_FILENO)) || needsNewStart();
      });
    }
  }

  /// Takes over what `read` gives, or tells why not; and the model files, as far as they fit.
  void reload(Read const& read) {
    service_.reloadBegins();
    models_.reload();
    try {
      optionsAre(read());
      complain("configuration read again: " + slots_.text(), Priority::info);
    } catch (UsageError const& error) {
      complain(std::string(error.what()) + "; the configuration of before stays");
    } catch (Failure const& failure) {
      complain(std::string(failure.what()) + "; the configuration of before stays");
    }
    slots_.detectUnrecognised();
    tellService();
    service_.reloadEnds();
  }

 private:
  /// Throws a `UsageError` before anything has changed.
  void optionsAre(MonitorOptions options) {
    std::vector<SlotPlan> const plans = plansOf(options);
    if (isLive(plans) && loop_.kind() == ClockKind::virtualClock) {
      throw UsageError("--slot: a bus cannot join a run whose time is virtual");
    }
    keepFixed(options);
    if (auto const publishing = publishingOf(options); publisher_ && publishing) {
      publisher_->publishingIs(*publishing);
    }
    slots_.plansAre(plans);
    options_ = std::move(options);
  }

  /// Puts back in `options` what is settled at the start, and tells of what was to change.
  void keepFixed(MonitorOptions& options) const {
    auto const keep = [&](auto MonitorOptions::*option, char const* key) {
      if (options.*option != options_.*option) {
        complain(std::string(key) + ": changes at the next start only", Priority::warning);
        options.*option = options_.*option;
      }
    };
    keep(&MonitorOptions::publish, "publish");
    keep(&MonitorOptions::metrics, "metrics");
    keep(&MonitorOptions::record, "record");
    keep(&MonitorOptions::incidents, "incidents");
    keep(&MonitorOptions::isRedacted, "redact");
    keep(&MonitorOptions::duration, "duration");
    keep(&MonitorOptions::isJson, "json");
  }

  /// A folder that the service manager made is beyond the rights of the service, once it has gone.
  bool needsNewStart() const {
    return service_.isListening() && publisher_ && publisher_->hasLostFolder();
  }

  void tellService() { service_.stateIs(slots_.text(), slots_.isComplete()); }

  MonitorOptions options_;
  ModelSet& models_;
  Loop& loop_;
  Reporting& reporting_;
  Service service_;
  std::optional<Publisher> publisher_;
  std::optional<Recorder> recorder_;
  Meter meter_;
  std::optional<Pseudonyms> pseudonyms_;
  std::optional<IncidentFolder> incidents_;
  WatchedSlots slots_;
  std::optional<MetricsFile> metrics_;
};

Status monitor(Read const& read, bool isReloadable, Globals const& globals) {
  MonitorOptions const options = read();
  for (SlotPlan const& plan : plansOf(options)) {
    checkIsNotRead("--record", options.record, plan.source.file());
  }
  ignoreWriteSignals();
  Plugin const plugin(globals.library);
  ModelSet models(globals.models);
  Loop loop(isLive(plansOf(options)) ? ClockKind::steadyClock : ClockKind::virtualClock);
  Reporting reporting{.isJson = options.isJson, .isLive = true};
  {
    Monitor monitor(options, plugin, models, loop, reporting);
    if (isReloadable) {
      loop.onHangUpIs([&] { monitor.reload(read); });
    } else if (std::signal(SIGHUP, SIG_IGN) != SIG_IGN) {
      loop.onHangUpIs([&loop] { loop.stop(); });
    }
    monitor.run();
  }
  return reporting.ledger.status();
}

Status check(MonitorOptions const& options, Globals const& globals) {
  if (!globals.models.paths.empty()) {
    Plugin const plugin(globals.library);
    ModelSet const models(globals.models);
  }
  std::cout << "the configuration is sound:";
  for (SlotPlan const& plan : plansOf(options)) {
    std::cout << ' ' << plan.name;
  }
  std::cout << '\n';
  return Status::ok;
}

}  // namespace

Action prepareMonitor(Parameters& command) {
  auto const line = std::make_shared<CommandLine>();
  addMonitorOptions(command, line->options);
  command.add("--config", line->config, "Further options, as KEY = VALUE; SIGHUP reads it again")
      .aPath("FILE");
  command.addFlag("--check", line->isCheck, "Tell whether the configuration is sound, and end");
  return [line, command](Globals const& globals) {
    Read const read = [&] {
      if (!line->config.empty()) {
        return completed(line->options, command, line->config);
      }
      checkTogether(line->options);
      return line->options;
    };
    bool const isReloadable = !line->config.empty() || !globals.models.paths.empty();
    return line->isCheck ? check(read(), globals) : monitor(read, isReloadable, globals);
  };
}

}  // namespace Agent
