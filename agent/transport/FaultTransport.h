// The fault wrapper: any transport, made to misbehave.
#pragma once

#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "agent/transport/FaultKind.h"
#include "agent/transport/Timer.h"
#include "host/smbus/Transport.h"

namespace Agent {

/// Forwards to another transport and applies faults: those of a script, of which each transaction
/// meets the first that is due and not used up, or else random ones.
class FaultTransport final : public Smbus::Transport, private Smbus::AnswerSink {
 public:
  explicit FaultTransport(std::unique_ptr<Smbus::Transport> inner);

  Smbus::Transport& inner() { return *inner_; }
  /// Appends to the script.
  void faultQEnq(Fault const& fault) { script_.push_back(fault); }
  /// From now on, of the transactions that no fault of the script meets, about `rate` (0 to 1) meet
  /// a random one. The same `startValue` gives the same faults.
  void randomIs(Kex::U64 startValue, double rate);

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override;

 private:
  /// Where random faults come from, and how many of all transactions they meet.
  struct Noise {
    std::mt19937_64 random;
    double rate;
  };

  /// An answer that was held back, and the transaction that it belongs to.
  struct LateAnswer {
    Kex::U64 ticket;
    Smbus::Reply reply;
  };

  void answerIs(Kex::U64 ticket, Smbus::Reply const& reply) override;
  std::optional<Fault> nextFault();
  static std::optional<Fault> randomFault(Noise& noise);
  /// Fails the transaction: a timeout when its bus timeout is over, anything else at once.
  void fail(Smbus::ErrorKind error);
  void giveLateAnswer();

  std::unique_ptr<Smbus::Transport> inner_;
  std::vector<Fault> script_;
  std::optional<Noise> noise_;
  Smbus::AnswerSink* sink_ = nullptr;
  /// The transaction under way: its ticket, what it suffers, and when its bus timeout is over.
  Kex::U64 ticket_ = 0;
  Fault fault_;
  /// Of what kind the fault is; null for none.
  FaultKind const* kind_ = nullptr;
  double timeout_ = 0;
  Smbus::Reply failure_;
  Timer failureTimer_;
  std::optional<LateAnswer> late_;
  Timer lateTimer_;
};

}  // namespace Agent
