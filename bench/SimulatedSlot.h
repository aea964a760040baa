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

/// Seconds from one poll or check to the next.
inline constexpr double kInterval = 1.0;
/// Detection starts over once an interval. This is long enough for that, and too short for a
/// second check.
inline constexpr double kRecognition = 1.05 * kInterval;

/// The supplies that are recognised in turn: two with serial numbers of their own, so that every
/// description is another than the one before.
inline Agent::SimulatedSupply const& supplyNumber(unsigned number) {
  static auto const supplies = [] {
    Sample sample("ds2900");
    auto const first = sample.supply();
    sample.serialNumberIs("12345678901");
    return std::to_array({first, sample.supply()});
  }();
  return supplies[number % supplies.size()];
}
/// The supply that is recognised where there is only one.
inline Agent::SimulatedSupply const& theSupply() { return supplyNumber(0); }

/// A slot with a supply, or an empty one.
class SimulatedSlot {
 public:
  SimulatedSlot(Agent::Plugin const& plugin, std::string const& name,
                Agent::SimulatedSupply const* supply)
      : SimulatedSlot(plugin, name, std::make_unique<PromptBus>(supply)) {}
  SimulatedSlot(Agent::Plugin const& plugin, std::string const& name,
                std::unique_ptr<PromptBus> bus)
      : bus_(*bus),
        slot_(name, std::move(bus), plugin),
        identifier_(slot_.driver()->identifier("EmersonPmbus")) {}

  /// Recognises a supply that takes the place of the last one, from the MFR_ID to the first check.
  void recognise() {
    bus_.supplyIs(&supplyNumber(++swaps_));
    identifier_->kexFwkActivityIs(true);
    run(kRecognition);
  }

  Agent::Slot& slot() { return slot_; }

 private:
  PromptBus& bus_;
  Agent::Slot slot_;
  unsigned swaps_ = 0;
  Kex::Ptr<PowerSupplyDetector::IdentifierBase> identifier_;
};

}  // namespace Bench
