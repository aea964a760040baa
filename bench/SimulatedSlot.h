// A slot with a simulated supply, driven on virtual time.
#pragma once

#include <string>
#include <utility>

#include "agent/slots/Slot.h"
#include "bench/support/Sample.h"
#include "host/kex/time/ActivityManager.h"

namespace Bench {

/// A bus that answers at the run loop's next turn: the least that a transport can cost.
class PromptBus final : public Smbus::Transport, private Kex::Activity {
 public:
  /// `supply` must outlive the bus; null for an empty one.
  explicit PromptBus(Agent::SimulatedSupply const* supply) : supply_(supply) {}

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override {
    reply_ = supply_ != nullptr ? supply_->answer(transaction)
                                : Smbus::Reply::failed(Smbus::ErrorKind::noAcknowledge);
    ticket_ = ticket;
    sink_ = &sink;
    enqueue();
  }

 private:
  void run() override { sink_->answerIs(ticket_, reply_); }

  Agent::SimulatedSupply const* supply_;
  Smbus::Reply reply_;
  Kex::U64 ticket_ = 0;
  Smbus::AnswerSink* sink_ = nullptr;
};

/// Runs everything that is due within the next `seconds`.
inline void run(double seconds) {
  Kex::ActivityManager& loop = Kex::activityManager();
  loop.runUntil(loop.config().clock()->time() + seconds);
}

/// Long enough for a recognition up to its first check, too short for the second one.
inline constexpr double kRecognition = 0.5;
/// Seconds from one poll or check to the next.
inline constexpr double kInterval = 1.0;

/// The supply that is recognised wherever one is.
inline Agent::SimulatedSupply const& theSupply() {
  static Agent::SimulatedSupply const supply = Sample("ds2900").supply();
  return supply;
}

/// A slot with a supply, or an empty one.
class SimulatedSlot {
 public:
  SimulatedSlot(Agent::Plugin const& plugin, std::string const& name,
                Agent::SimulatedSupply const* supply)
      : slot_(name, std::make_unique<PromptBus>(supply), plugin),
        identifier_(slot_.driver()->identifier("EmersonPmbus")) {}

  /// Recognises the supply again, from the MFR_ID to the first check.
  void recognise() {
    identifier_->kexFwkActivityIs(true);
    run(kRecognition);
  }

  Agent::Slot& slot() { return slot_; }

 private:
  Agent::Slot slot_;
  Kex::Ptr<PowerSupplyDetector::IdentifierBase> identifier_;
};

}  // namespace Bench
