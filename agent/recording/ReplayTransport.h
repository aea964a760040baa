// The transport that plays a recording.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "agent/recording/Recording.h"
#include "agent/transport/Timer.h"

namespace Agent {

/// Answers each transaction as it was answered when it was recorded: the same status, bytes and
/// failure, at the same time of the framework's clock, or at once if that has passed. What is
/// asked for after the end of the recording is never answered.
class ReplayTransport final : public Smbus::Transport {
 public:
  /// `place` is `FILE`, or `FILE#SLOT` where the recording has several slots. `onEnd`, where there
  /// is one, is called when something is asked for that the recording cannot answer. Throws a
  /// `Failure`.
  explicit ReplayTransport(std::string const& place, std::function<void()> onEnd = {});

  /// Throws a `Failure` that names the line when `transaction` is not the one that was recorded.
  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override;

 private:
  void finish();
  void end() const;

  std::string file_;
  std::function<void()> onEnd_;
  std::vector<RecordedTransaction> transactions_;
  std::size_t next_ = 0;
  Kex::U64 ticket_ = 0;
  Smbus::AnswerSink* sink_ = nullptr;
  Timer timer_;
};

}  // namespace Agent
