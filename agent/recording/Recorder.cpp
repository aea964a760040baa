// The writer of recordings.
#include "agent/recording/Recorder.h"

#include <cerrno>
#include <utility>

#include "agent/base/Error.h"
#include "agent/base/JsonObject.h"
#include "agent/recording/Recording.h"
#include "agent/recording/Transcript.h"

namespace Agent {

Recorder::Recorder(std::string file)
    : file_(std::move(file)), out_(file_, std::ios::binary | std::ios::trunc) {
  if (!out_) {
    throw Failure(file_ + ": cannot open for writing: " + systemError(errno));
  }
  write(Recording::header());
}

void Recorder::recordIs(std::string const& slot, TransactionRecord const& record) {
  if (!out_) {
    return;
  }
  auto const failure = record.isOk ? std::nullopt : std::optional(record.failure);
  write(transactionJson(slot, record).add("failure", failure).text());
}

void Recorder::write(std::string const& line) {
  out_ << line << '\n' << std::flush;
  if (!out_) {
    throw Failure(file_ + ": cannot write: " + systemError(errno));
  }
}

}  // namespace Agent
