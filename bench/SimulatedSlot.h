// A slot with a simulated supply, driven on virtual time.
#pragma once

#include <array>
#include <memory>
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

  /// See the constructor.
  void supplyIs(Agent::SimulatedSupply const* supply) { supply_ = supply; }

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

/// Seconds from one poll or check to the next, and the least from one recognition to the next.
inline constexpr double kInterval = 1.0;
/// Long enough for a recognition up to its first check and for the next one to begin at once, too
/// short for the second check.
inline constexpr double kRecognition = 1.1;

/// Two supplies of one model, of which only the serial numbers differ.
inline std::array<Agent::SimulatedSupply, 2> const& supplies() {
  static std::array<Agent::SimulatedSupply, 2> const two = [] {
    Sample sample("ds2900");
    Agent::SimulatedSupply const first = sample.supply();
    sample.serialNumberIs("12345678901");
    return std::array{first, sample.supply()};
  }();
  return two;
}

/// A slot with a supply, or an empty one.
class SimulatedSlot {
 public:
  SimulatedSlot(Agent::Plugin const& plugin, std::string const& name,
                Agent::SimulatedSupply const* supply)
      : SimulatedSlot(plugin, name, std::make_unique<PromptBus>(supply)) {}

  /// Has the other supply recognised, from the MFR_ID to the first check, within `kRecognition`:
  /// what was known of the slot changes each time.
  void doRecognise() {
    bus_.supplyIs(&supplies()[++turn_ % 2]);
    identifier_->kexFwkActivityIs(true);
  }

  Agent::Slot& slot() { return slot_; }

 private:
  SimulatedSlot(Agent::Plugin const& plugin, std::string const& name,
                std::unique_ptr<PromptBus> bus)
      : bus_(*bus),
        slot_(name, std::move(bus), plugin),
        identifier_(slot_.driver()->identifier("EmersonPmbus")) {}

  PromptBus& bus_;
  Agent::Slot slot_;
  Kex::Ptr<PowerSupplyDetector::IdentifierBase> identifier_;
  unsigned turn_ = 0;
};

}  // namespace Bench
