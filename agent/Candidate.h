// A source in a slot of its own, watched until it is known what is there.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "agent/Loop.h"
#include "agent/Slot.h"
#include "agent/Source.h"
#include "agent/TransactionLog.h"

namespace Agent {

/// A slot whose detection runs through poll, identify and first check, and ends with its outcome.
class Candidate {
 public:
  using Supply = Hardware::PowerSupplySlot::Supply;

  /// Until `waitUntil` (seconds) only an identified supply is an outcome that ends the detection.
  Candidate(std::string source, std::string const& slotName,
            std::unique_ptr<Smbus::Transport> transport, Plugin const& plugin, double waitUntil);

  /// The source as it was written.
  std::string const& source() const { return source_; }
  Slot const& slot() const { return slot_; }
  /// What the last detection found; none before the first one has ended.
  std::optional<Supply> const& outcome() const { return outcome_; }
  /// Whether detection has ended.
  bool isDone() const { return isDone_; }
  TransactionLog const& log() const { return log_; }
  TransactionLog& log() { return log_; }

 private:
  void handleSupply(Supply const& supply);

  std::string source_;
  double waitUntil_;
  TransactionLog log_;
  std::optional<Supply> outcome_;
  bool isDone_ = false;
  Slot slot_;
};

using Candidates = std::vector<std::unique_ptr<Candidate>>;

/// Runs `loop` until the detection of all has ended or `waitUntil` (seconds) is over and all have
/// an outcome.
void detect(Candidates const& candidates, Loop& loop, double waitUntil);

}  // namespace Agent
