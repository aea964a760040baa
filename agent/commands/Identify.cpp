// psu-agent identify: prints the FDL of each source's supply.
#include "agent/commands/Command.h"

#include <iostream>
#include <memory>
#include <optional>

#include "agent/base/InputFile.h"
#include "agent/base/Ledger.h"
#include "agent/base/Terminal.h"
#include "agent/base/Text.h"
#include "agent/commands/OutputFolder.h"
#include "agent/recording/Recorder.h"
#include "agent/report/Explain.h"
#include "agent/report/Report.h"
#include "agent/report/Table.h"
#include "agent/slots/Candidate.h"
#include "agent/transport/SimulatedBus.h"

namespace Agent {

namespace {

struct Options {
  std::string mfrId = "EMERSON";
  double wait = 0;
  bool isJson = false;
  bool isExplained = false;
  bool isRepaired = false;
  bool isTable = false;
  std::string output;
  std::string record;
  std::vector<std::string> sources;

  /// Whether standard output is for what is told of the supplies.
  bool isPrinted() const { return record != "-"; }
};

/// A SOURCE, and what became of it.
struct Entry {
  std::string source;
  std::string slot;
  /// The place of its candidate; none when it could not be opened.
  std::optional<std::size_t> candidate{};
  /// Why there is no outcome.
  std::string failure{};
};

/// A slot for each source that can be opened.
std::vector<Entry> open(std::vector<Source> const& sources, Options const& options,
                        Plugin const& plugin, Loop const& loop, Candidates& candidates,
                        Ledger& ledger) {
  std::vector<Entry> entries;
  SourceContext const context{.mfrId = options.mfrId, .post = loop.post()};
  for (Source const& source : sources) {
    Entry& entry = entries.emplace_back(
        Entry{.source = source.text(), .slot = "PowerSupply" + std::to_string(entries.size() + 1)});
    try {
      candidates.push_back(
          std::make_unique<Candidate>(source, context, entry.slot, plugin, options.wait));
      entry.candidate = candidates.size() - 1;
    } catch (Failure const& failure) {
      entry.failure = failure.what();
      ledger.tell(Status::failed, entry.failure);
    }
  }
  return entries;
}

/// Writes each transaction of `candidates` to `recorder`.
void record(Candidates const& candidates, Recorder& recorder, Ledger& ledger) {
  for (auto const& candidate : candidates) {
    candidate->log().onRecordIs([&, slot = candidate->slot().name()](auto const& transaction) {
      ledger.attempt([&] { recorder.recordIs(slot, transaction); });
    });
  }
}

JsonObject objectOf(Entry const& entry) {
  JsonObject object;
  object.add("source", entry.source).add("slot", entry.slot);
  return object;
}

/// Prints which of several sources the FDL behind it is of; only a person needs that.
void printHeading(Entry const& entry, std::vector<Entry> const& entries, Options const& options) {
  if (isOutTerminal() && entries.size() > 1 && options.isPrinted() && !options.isExplained &&
      !options.isJson && !options.isTable && options.output.empty()) {
    std::cout << inLook(Look::heading, "== " + escaped(entry.source) + " ==") << '\n';
  }
}

/// Prints the outcome of `entry`, whose candidate has none.
void printFailure(Entry const& entry, Options const& options) {
  if (options.isJson && options.isPrinted()) {
    JsonObject object = objectOf(entry);
    std::cout << addFailure(object, entry.failure).text() << '\n';
  }
}

/// What is printed of the supply at once.
std::string textOf(Entry const& entry, Candidate const& candidate, Supply const& supply,
                   std::optional<Hint> const& hint, Options const& options) {
  if (options.isExplained) {
    return explain(entry.source, candidate.log(), supply, candidate.memory(), hint);
  }
  if (options.isJson) {
    JsonObject object = objectOf(entry);
    return addSupply(object, supply, hint).text() + '\n';
  }
  return options.output.empty() && !options.isTable ? std::string(supply.fdl.view()) : "";
}

void print(Entry const& entry, Candidate const& candidate, Supply const& supply,
           Options const& options, Ledger& ledger) {
  std::optional<Hint> const hint = candidate.hint();
  if (options.isPrinted()) {
    std::cout << textOf(entry, candidate, supply, hint, options);
  }
  if (Status const status = statusOf(supply); status != Status::ok) {
    ledger.tell(status, entry.source + ": " + explanation(supply, hint));
  } else if (hint) {
    complain(entry.source + ": warning: " + (hint->isRepaired ? "repaired: " : "") + hint->text,
             Priority::warning);
  }
  for (Suspect const& suspect : suspects(supply)) {
    complain(entry.source + ": warning: " + suspect.field + ' ' + inQuotes(suspect.text) +
                 " changes the meaning of the FDL that it is written into, or of a terminal",
             Priority::warning);
  }
}

/// What `candidate` found; null where that is nothing, or where there is no candidate.
Supply const* outcomeOf(Candidate const* candidate) {
  if (candidate == nullptr) {
    return nullptr;
  }
  std::optional<Supply> const& outcome = candidate->outcome();
  return outcome ? &*outcome : nullptr;
}

/// Recognises anew those whose product info area is right but for its length, with that length.
void repair(Candidates& candidates, Plugin const& plugin, Loop& loop) {
  for (auto& candidate : candidates) {
    Supply const* const found = outcomeOf(candidate.get());
    std::optional<Hint> hint = candidate->hint();
    if (found == nullptr || !hint || !hint->length) {
      continue;
    }
    hint->isRepaired = true;
    SimulatedSupply const supply(repaired(candidate->memory(), *hint->length),
                                 found->mfrId.value_or("").view());
    std::string const source = candidate->source();
    std::string const slot = candidate->slot().name();
    candidate.reset();
    candidate = std::make_unique<Candidate>(source, std::make_unique<SimulatedBus>(supply), slot,
                                            plugin, *hint);
  }
  detect(candidates, loop, 0);
}

Status identify(Options const& options, Globals const& globals) {
  std::vector<Source> const sources = parseSources(options.sources);
  for (Source const& source : sources) {
    checkIsNotRead("--record", options.record, source.file());
  }
  std::optional<OutputFolder> output;
  if (!options.output.empty()) {
    output.emplace(options.output, sources);
  }
  Plugin const plugin(globals.library);
  ModelSet const models(globals.models);
  Loop loop(anyLive(sources) ? ClockKind::steadyClock : ClockKind::virtualClock);
  Ledger ledger;
  Candidates candidates;
  std::vector<Entry> entries = open(sources, options, plugin, loop, candidates, ledger);
  std::optional<Recorder> recorder;
  if (!options.record.empty()) {
    record(candidates, recorder.emplace(options.record), ledger);
  }
  detect(candidates, loop, options.wait);
  if (options.isRepaired) {
    repair(candidates, plugin, loop);
  }
  std::vector<SupplyRow> rows;
  for (Entry& entry : entries) {
    Candidate const* const candidate =
        entry.candidate ? candidates[*entry.candidate].get() : nullptr;
    Supply const* const supply = outcomeOf(candidate);
    if (output) {
      ledger.attempt([&] { output->fdlIs(rows.size(), supply ? supply->fdl.view() : ""); });
    }
    rows.push_back({.source = entry.source, .supply = supply});
    if (supply != nullptr) {
      printHeading(entry, entries, options);
      print(entry, *candidate, *supply, options, ledger);
      continue;
    }
    if (candidate != nullptr) {
      entry.failure = loop.isStopped() ? "no outcome (interrupted)" : "no outcome";
      ledger.tell(Status::failed, entry.source + ": " + entry.failure);
    }
    printFailure(entry, options);
  }
  if (options.isTable && options.isPrinted()) {
    std::cout << tableOf(rows);
  }
  ledger.add(loop.status());
  return ledger.status();
}

}  // namespace

Action prepareIdentify(Parameters& command) {
  auto const options = std::make_shared<Options>();
  addMfrIdOption(command, options->mfrId);
  command.add("--wait", options->wait, "Poll for up to S seconds until a supply is identified")
      .inSeconds(0);
  Parameter const isJson =
      command.addFlag("--json", options->isJson, "Print one JSON object a line instead");
  Parameter const isExplained = command.addFlag("--explain", options->isExplained,
                                                "Print how the supply was recognised instead");
  isExplained.excludes(isJson);
  command
      .addFlag("--repair", options->isRepaired,
               "Take the length of the product info area with which its checksum is right")
      .excludes(isExplained);
  command.addFlag("--table", options->isTable, "Print a table, one line a SOURCE, instead")
      .excludes(isJson)
      .excludes(isExplained);
  command.add("--output", options->output, "Write each FDL into a file of its own in DIR instead")
      .aPath("DIR");
  command
      .add("--record", options->record,
           "Write all bus transactions to FILE; - is standard output, and nothing else there")
      .aPath("FILE");
  command
      .add("SOURCE", options->sources,
           "FRU image file, - for standard input, i2c:N, i2c:PATH, i2c:name=TEXT, or "
           "replay:FILE[#SLOT]")
      .required();
  return [options](Globals const& globals) { return identify(*options, globals); };
}

}  // namespace Agent
