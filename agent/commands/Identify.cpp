// psu-agent identify: prints the FDL of each source's supply.
#include "agent/commands/Identify.h"

#include <cmath>
#include <iostream>
#include <memory>
#include <optional>

#include "agent/base/Error.h"
#include "agent/base/Text.h"
#include "agent/recording/Recorder.h"
#include "agent/report/Explain.h"
#include "agent/report/Report.h"
#include "agent/slots/Candidate.h"
#include "agent/transport/SimulatedSupply.h"
#include "host/kex/base/Format.h"

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
                Loop const& loop, Status& status) {
  Candidates candidates;
  SourceContext const context{.mfrId = options.mfrId, .post = loop.post()};
  for (std::size_t i = 0; i < sources.size(); ++i) {
    try {
      candidates.push_back(std::make_unique<Candidate>(
          sources[i], context, "PowerSupply" + std::to_string(i + 1), plugin, options.wait));
    } catch (Failure const& failure) {
      complain(failure.what());
      status = worse(status, Status::failed);
    }
  }
  return candidates;
}

/// Writes each transaction of `candidates` to `recorder`.
void record(Candidates const& candidates, Recorder& recorder, Status& status) {
  for (auto const& candidate : candidates) {
    candidate->log().onRecordIs([&, slot = candidate->slot().name()](auto const& transaction) {
      try {
        recorder.recordIs(slot, transaction);
      } catch (Failure const& failure) {
        complain(failure.what());
        status = worse(status, Status::failed);
      }
    });
  }
}

Json json(Candidate const& candidate, Supply const& supply) {
  Json object;
  object["source"] = candidate.source();
  object["slot"] = candidate.slot().name();
  object.update(supplyJson(supply));
  return object;
}

void print(Candidate const& candidate, Supply const& supply, Options const& options) {
  if (options.isExplained) {
    std::cout << explain(candidate.source(), candidate.log(), supply);
  } else if (options.isJson) {
    std::cout << jsonLine(json(candidate, supply)) << '\n';
  } else {
    std::cout << supply.fdl;
  }
  if (statusOf(supply) != Status::ok) {
    complain(candidate.source() + ": " + explanation(supply));
  }
  for (Suspect const& suspect : suspects(supply)) {
    complain(candidate.source() + ": warning: " + suspect.field + ' ' + inQuotes(suspect.text) +
             " changes the meaning of the FDL that it is written into");
  }
}

Status identify(Options const& options, Globals const& globals) {
  if (!std::isfinite(options.wait) || options.wait < 0) {
    throw UsageError(
        std::string(Kex::format("--wait: %g is no number of seconds", options.wait).view()));
  }
  std::vector<Source> const sources = parseSources(options.sources);
  Plugin const plugin(globals.library);
  Loop loop(anyLive(sources) ? ClockKind::steadyClock : ClockKind::virtualClock);
  Status status = Status::ok;
  Candidates const candidates = open(sources, options, plugin, loop, status);
  std::optional<Recorder> recorder;
  if (!options.record.empty()) {
    record(candidates, recorder.emplace(options.record), status);
  }
  detect(candidates, loop, options.wait);
  for (auto const& candidate : candidates) {
    if (auto const& supply = candidate->outcome()) {
      print(*candidate, *supply, options);
      status = worse(status, statusOf(*supply));
    } else {
      complain(candidate->source() + ": no outcome" + (loop.isStopped() ? " (interrupted)" : ""));
      status = worse(status, Status::failed);
    }
  }
  return status;
}

}  // namespace

void addMfrIdOption(CLI::App& command, std::string& mfrId) {
  command.add_option("--mfr-id", mfrId, "MFR_ID that supplies simulated from files answer")
      ->option_text("TEXT")
      ->check([](std::string const& text) {
        bool const fits = !text.empty() && text.size() <= SimulatedSupply::kLongestMfrId;
        return fits ? std::string() : inQuotes(text) + " has not 1 to 32 bytes";
      });
}

void addIdentify(CLI::App& program, Action& action) {
  auto const options = std::make_shared<Options>();
  CLI::App& command = *program.add_subcommand("identify", "Print the FDL of each SOURCE's supply");
  addMfrIdOption(command, options->mfrId);
  command
      .add_option("--wait", options->wait, "Poll for up to S seconds until a supply is identified")
      ->option_text("S");
  auto* const isJson =
      command.add_flag("--json", options->isJson, "Print one JSON object a line instead");
  command
      .add_flag("--explain", options->isExplained, "Print how the supply was recognised instead")
      ->excludes(isJson);
  command.add_option("--record", options->record, "Write all bus transactions to FILE")
      ->option_text("FILE");
  command
      .add_option("SOURCE", options->sources,
                  "FRU image file, - for standard input, i2c:N, or replay:FILE[#SLOT]")
      ->required();
  command.callback([options, &action] {
    action = [options](Globals const& globals) { return identify(*options, globals); };
  });
}

}  // namespace Agent
