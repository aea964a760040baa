// A source in a slot of its own, watched until it is known what is there.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "agent/recording/TransactionLog.h"
#include "agent/report/Hint.h"
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
  /// The same for a supply that `source` stands for and `transport` leads to, with what is told of
  /// it.
  Candidate(std::string source, std::unique_ptr<Smbus::Transport> transport,
            std::string const& slotName, Plugin const& plugin, Hint hint);
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
  /// What is known of its supply's FRU memory: what was read, and what the source has of it.
  FruBytes memory() const;
  /// What the person who reads the outcome may look at first; none before there is an outcome.
  std::optional<Hint> hint() const;
  TransactionLog const& log() const { return log_; }
  TransactionLog& log() { return log_; }

 private:
  void listen();
  void handleSupply(Supply const& supply);
  /// `context`, with this candidate told of what the source tells.
  SourceContext listening(SourceContext context);

  std::string source_;
  double waitUntil_;
  TransactionLog log_;
  std::optional<Hint> hint_;
  /// The memory that the supply is simulated from; empty where it is not.
  std::vector<Kex::U8> image_;
  std::optional<Supply> outcome_;
  bool isDone_ = false;
  bool hasSourceEnded_ = false;
  Slot slot_;
};

using Candidates = std::vector<std::unique_ptr<Candidate>>;

/// Runs `loop` until the detection of all has ended or `waitUntil` (seconds) is over and all have
/// an outcome or will have none.
void detect(Candidates const& candidates, Loop& loop, double waitUntil);
/// The candidate of one source, PowerSupply1, whose detection has ended; one that is simulated
/// answers `mfrId`. Throws a `Failure` when `source` cannot be opened.
std::unique_ptr<Candidate> detected(Source const& source, std::string const& mfrId,
                                    Plugin const& plugin, Loop& loop);

}  // namespace Agent
