// The writer of recordings.
#include "agent/recording/Recorder.h"

#include <cerrno>
#include <iostream>

#include "agent/base/Error.h"
#include "agent/recording/Recording.h"
#include "agent/recording/Transcript.h"

namespace Agent {

Recorder::Recorder(std::string const& file)
    : name_(file == "-" ? "standard output" : file), out_(file == "-" ? std::cout : file_) {
  if (file != "-") {
    file_.open(file, std::ios::binary | std::ios::trunc);
  }
  if (!out_) {
    throw Failure(name_ + ": cannot open for writing: " + systemError(errno));
  }
  lineIs(Recording::header());
}

void Recorder::recordIs(std::string const& slot, TransactionRecord const& record) {
  lineIs(recordingLine(slot, record));
}

void Recorder::lineIs(std::string const& line) {
  if (!out_) {
    return;
  }
  out_ << line << '\n' << std::flush;
  if (!out_) {
    throw Failure(name_ + ": cannot write: " + systemError(errno));
  }
}

}  // namespace Agent
