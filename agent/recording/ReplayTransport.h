// The transport that plays a recording.
#pragma once

#include <string>
#include <vector>

#include "agent/recording/Recording.h"
#include "agent/transport/OnEnd.h"
#include "agent/transport/Timer.h"

namespace Agent {

/// Answers each transaction as it was answered when it was recorded: the same status, bytes and
/// failure, at the same time of the framework's clock, or at once if that has passed. A replay ends
/// when something else is asked for than was recorded, or more; from then on the bus has gone.
class ReplayTransport final : public Smbus::Transport {
 public:
  /// `target` is `FILE`, or `FILE#SLOT` where the recording has several slots. `onEnd`, where there
  /// is one, is told before the first answer that the recording does not have; what it is told
  /// names the file and the line. Throws a `Failure`.
  explicit ReplayTransport(std::string const& target, OnEnd onEnd = {});

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override;

 private:
  /// Why `transaction` cannot be answered; empty if it can.
  std::string obstacle(Smbus::Transaction const& transaction) const;
  void finish();

  std::string file_;
  OnEnd onEnd_;
  std::vector<RecordedTransaction> transactions_;
  bool isCut_ = false;
  /// Why the replay has ended; empty while it has not.
  std::string end_;
  std::size_t next_ = 0;
  Kex::U64 ticket_ = 0;
  Smbus::AnswerSink* sink_ = nullptr;
  Timer timer_;
};

}  // namespace Agent
