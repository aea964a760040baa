// A source in a slot of its own, watched until it is known what is there.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "agent/recording/TransactionLog.h"
#include "agent/slots/Loop.h"
#include "agent/slots/Slot.h"
#include "agent/slots/Source.h"

namespace Agent {

/// A slot whose detection runs through poll, identify and first check, and ends with its outcome.
class Candidate {
 public:
  /// Until `waitUntil` (seconds) only an identified supply is an outcome that ends the detection.
  /// Throws a `Failure` when `source` cannot be opened.
  Candidate(Source const& source, SourceContext context, std::string const& slotName,
            Plugin const& plugin, double waitUntil);
  Candidate(Candidate const&) = delete;
  Candidate& operator=(Candidate const&) = delete;
  ~Candidate() = default;

  /// The source as it was written.
  std::string const& source() const { return source_; }
  Slot const& slot() const { return slot_; }
  /// What the last detection found; none before the first one has ended.
  std::optional<Supply> const& outcome() const { return outcome_; }
  /// Whether detection has ended.
  bool isDone() const { return isDone_ || hasSourceEnded_; }
  /// Whether there will be no further outcome than that of now.
  bool hasSourceEnded() const { return hasSourceEnded_; }
  TransactionLog const& log() const { return log_; }
  TransactionLog& log() { return log_; }

 private:
  void handleSupply(Supply const& supply);
  /// `context`, with this candidate told of the source's end.
  SourceContext onEnd(SourceContext context);

  std::string source_;
  double waitUntil_;
  TransactionLog log_;
  std::optional<Supply> outcome_;
  bool isDone_ = false;
  bool hasSourceEnded_ = false;
  Slot slot_;
};

using Candidates = std::vector<std::unique_ptr<Candidate>>;

/// Runs `loop` until the detection of all has ended or `waitUntil` (seconds) is over and all have
/// an outcome or will have none.
void detect(Candidates const& candidates, Loop& loop, double waitUntil);

}  // namespace Agent
