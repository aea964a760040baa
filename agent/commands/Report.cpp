// psu-agent report: recordings as a picture.
#include "agent/commands/Command.h"

#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

#include "agent/base/Error.h"
#include "agent/base/InputFile.h"
#include "agent/page/Page.h"
#include "agent/page/Rehearsal.h"

namespace Agent {

namespace {

struct Options {
  std::string output;
  bool isRedacted = false;
  std::vector<std::string> recordings;
};

void write(std::string const& page, std::string const& file) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!out) {
    throw Failure(file + ": cannot open for writing: " + systemError(errno));
  }
  out << page << std::flush;
  if (!out) {
    throw Failure(file + ": cannot write: " + systemError(errno));
  }
}

Status report(Options const& options, Globals const& globals) {
  for (std::string const& file : options.recordings) {
    checkIsNotRead("--output", options.output, file);
  }
  Plugin const plugin(globals.library);
  Loop loop(ClockKind::virtualClock);
  Pseudonyms const pseudonyms = Pseudonyms::ofMachine();
  std::vector<Lane> lanes;
  for (std::string const& file : options.recordings) {
    Recording recording(file);
    if (options.isRedacted) {
      recording = recording.redacted(pseudonyms);
    }
    for (auto const& [slot, recorded] : recording.slots()) {
      rehearse(recording, slot, plugin, loop, lanes.emplace_back(slot, file));
    }
  }
  std::string const page = pageOf(lanes, options.recordings.size() > 1);
  if (options.output.empty()) {
    std::cout << page;
  } else {
    write(page, options.output);
  }
  return Status::ok;
}

}  // namespace

Action prepareReport(Parameters& command) {
  auto const options = std::make_shared<Options>();
  command.add("-o,--output", options->output, "Write the page to FILE [standard output]")
      .aPath("FILE");
  command.addFlag("--redact", options->isRedacted, "Show pseudonyms in place of serial numbers");
  command
      .add("RECORDING", options->recordings, "What --record has written, or a kernel trace as text")
      .required()
      .notEmpty("RECORDING");
  return [options](Globals const& globals) { return report(*options, globals); };
}

}  // namespace Agent
