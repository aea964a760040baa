// psu-agent identify: prints the FDL of each source's supply.
#include "agent/commands/Command.h"

#include <iostream>
#include <memory>
#include <optional>

#include "agent/base/Ledger.h"
#include "agent/base/Text.h"
#include "agent/recording/Recorder.h"
#include "agent/report/Explain.h"
#include "agent/report/Report.h"
#include "agent/slots/Candidate.h"
#include "agent/transport/SimulatedSupply.h"

namespace Agent {

namespace {

struct Options {
  std::string mfrId = "EMERSON";
  double wait = 0;
  bool isJson = false;
  bool isExplained = false;
  std::string record;
  std::vector<std::string> sources;
};

/// A slot for each source that can be opened.
Candidates open(std::vector<Source> const& sources, Options const& options, Plugin const& plugin,
                Loop const& loop, Ledger& ledger) {
  Candidates candidates;
  SourceContext const context{.mfrId = options.mfrId, .post = loop.post()};
  for (std::size_t i = 0; i < sources.size(); ++i) {
    ledger.attempt([&] {
      candidates.push_back(std::make_unique<Candidate>(
          sources[i], context, "PowerSupply" + std::to_string(i + 1), plugin, options.wait));
    });
  }
  return candidates;
}

/// Writes each transaction of `candidates` to `recorder`.
void record(Candidates const& candidates, Recorder& recorder, Ledger& ledger) {
  for (auto const& candidate : candidates) {
    candidate->log().onRecordIs([&, slot = candidate->slot().name()](auto const& transaction) {
      ledger.attempt([&] { recorder.recordIs(slot, transaction); });
    });
  }
}

std::string json(Candidate const& candidate, Supply const& supply) {
  JsonObject object;
  object.add("source", candidate.source()).add("slot", candidate.slot().name());
  return addSupply(object, supply).text();
}

void print(Candidate const& candidate, Supply const& supply, Options const& options,
           Ledger& ledger) {
  if (options.isExplained) {
    std::cout << explain(candidate.source(), candidate.log(), supply);
  } else if (options.isJson) {
    std::cout << json(candidate, supply) << '\n';
  } else {
    std::cout << supply.fdl;
  }
  if (Status const status = statusOf(supply); status != Status::ok) {
    ledger.tell(status, candidate.source() + ": " + explanation(supply));
  }
  for (Suspect const& suspect : suspects(supply)) {
    complain(candidate.source() + ": warning: " + suspect.field + ' ' + inQuotes(suspect.text) +
             " changes the meaning of the FDL that it is written into");
  }
}

Status identify(Options const& options, Globals const& globals) {
  std::vector<Source> const sources = parseSources(options.sources);
  Plugin const plugin(globals.library);
  Loop loop(anyLive(sources) ? ClockKind::steadyClock : ClockKind::virtualClock);
  Ledger ledger;
  Candidates const candidates = open(sources, options, plugin, loop, ledger);
  std::optional<Recorder> recorder;
  if (!options.record.empty()) {
    record(candidates, recorder.emplace(options.record), ledger);
  }
  detect(candidates, loop, options.wait);
  for (auto const& candidate : candidates) {
    if (auto const& supply = candidate->outcome()) {
      print(*candidate, *supply, options, ledger);
    } else {
      ledger.tell(Status::failed, candidate->source() + ": no outcome" +
                                      (loop.isStopped() ? " (interrupted)" : ""));
    }
  }
  return ledger.status();
}

}  // namespace

Action prepareIdentify(CLI::App& command) {
  auto const options = std::make_shared<Options>();
  addMfrIdOption(command, options->mfrId);
  inSeconds(*command.add_option("--wait", options->wait,
                                "Poll for up to S seconds until a supply is identified"),
            0);
  auto* const isJson =
      command.add_flag("--json", options->isJson, "Print one JSON object a line instead");
  command
      .add_flag("--explain", options->isExplained, "Print how the supply was recognised instead")
      ->excludes(isJson);
  command.add_option("--record", options->record, "Write all bus transactions to FILE")
      ->option_text("FILE");
  command
      .add_option("SOURCE", options->sources,
                  "FRU image file, - for standard input, i2c:N, i2c:PATH, i2c:name=TEXT, or "
                  "replay:FILE[#SLOT]")
      ->required();
  return [options](Globals const& globals) { return identify(*options, globals); };
}

}  // namespace Agent
