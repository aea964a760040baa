// The transport that plays a recording.
#pragma once

#include <string>
#include <vector>

#include "agent/recording/Recording.h"
#include "agent/transport/OnEnd.h"
#include "agent/transport/Timer.h"

namespace Agent {

/// What follows `replay:`: `FILE`, or `FILE#SLOT` where the recording has several slots. A name
/// with a `#` in it is that of a file as far as there is one.
struct ReplayTarget {
  explicit ReplayTarget(std::string const& target);

  std::string file;
  /// Empty for the one slot that there is.
  std::string slot;
};

/// Answers each transaction as it was answered when it was recorded: the same status, bytes and
/// failure, at the same time of the framework's clock, or at once if that has passed; where it is
/// known when the detection began, times count from there. A replay ends when something else is
/// asked for than was recorded, or more; from then on the bus has gone.
///
/// Of a kernel trace, which may be of a program that asks for other things in between, each
/// transaction gets the next answer to the same question, if enough bytes of it are known.
class ReplayTransport final : public Smbus::Transport {
 public:
  /// `onEnd`, where there is one, is told before the first answer that the recording does not have;
  /// what it is told names the file and the line. What a trace cannot tell is told of on stderr.
  /// Throws a `Failure`.
  explicit ReplayTransport(ReplayTarget const& target, OnEnd onEnd = {});
  /// Plays `slot` of `recording`, whose times count from `origin` (seconds of the clock) on.
  ReplayTransport(Recording const& recording, std::string const& slot, OnEnd onEnd, double origin);

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override;

  /// How the detection is to begin; none where that is not known.
  std::optional<Beginning> const& beginning() const { return beginning_; }
  /// How far the replay has come: the index of the transaction behind the one that was answered
  /// last, be it for the first time or again.
  std::size_t position() const { return next_ + std::size_t{repeated_ != 0}; }

 private:
  /// Goes on to the next answer to `transaction`, if there is one.
  void seek(Smbus::Transaction const& transaction);
  /// Why `transaction` cannot be answered; empty if it can.
  std::string obstacle(Smbus::Transaction const& transaction) const;
  /// When the transaction that is answered next ended, in seconds of the recording.
  double nextTime() const;
  void finish();

  std::string file_;
  std::optional<Beginning> beginning_;
  double origin_;
  OnEnd onEnd_;
  std::vector<RecordedTransaction> transactions_;
  bool isTrace_ = false;
  bool isCut_ = false;
  /// Why the replay has ended; empty while it has not.
  std::string end_;
  std::size_t next_ = 0;
  /// How many of the next one's repetitions were answered.
  Kex::U32 repeated_ = 0;
  Kex::U64 ticket_ = 0;
  Smbus::AnswerSink* sink_ = nullptr;
  Timer timer_;
};

}  // namespace Agent
