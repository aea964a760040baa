// A slot whose supply is swapped over and over.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "agent/slots/Slot.h"
#include "agent/transport/SimulatedBus.h"
#include "bench/support/Sample.h"

namespace Bench {

/// A simulated slot on virtual time, in which every change that is seen must be one that was made.
class SwappedSlot {
 public:
  /// Cycles that differ from one another: each does something else to the slot.
  static constexpr Kex::U64 kRound = 8;

  explicit SwappedSlot(Agent::Plugin const& plugin)
      : SwappedSlot(plugin, std::make_unique<Agent::SimulatedBus>()) {}

  /// Swaps in another supply, or does to the one that is there what no serial number shows; waits
  /// until that is seen, no longer than it may take; then leaves the slot alone for up to two
  /// seconds. How long changes from number to number, so that a swap meets every moment of a check
  /// and of a poll. `number` is the serial number of a supply that has one of its own.
  void swap(Kex::U64 number);

  /// Changes that were made and not seen in time.
  Kex::U64 missed() const { return missed_; }
  /// Changes that were seen and not made, second sights of one among them.
  Kex::U64 unexpected() const { return unexpected_; }

 private:
  using Supply = Agent::Supply;

  /// What a change is known by, as for a person who watches the slot.
  struct Sight {
    Hardware::PowerSupplySlot::Verdict verdict;
    /// Part number, product version, serial number; empty without a product info area.
    std::string texts;
    bool operator==(Sight const&) const = default;
  };

  SwappedSlot(Agent::Plugin const& plugin, std::unique_ptr<Agent::SimulatedBus> bus);

  Sample& sample() { return samples_[current_]; }
  static std::string textsOf(Ipmi::ProductInfoArea const& product);
  void handleSupply(Supply const& supply);
  void pull(double leftAlone);
  /// Puts the sample in as it is now; that is seen within `bound` seconds.
  void insert(double bound, double leftAlone);
  /// Pulls the sample for too short a time to be told.
  void disturb();
  void change(std::optional<Agent::SimulatedSupply> const& supply, Sight expected, double bound,
              double leftAlone);

  std::array<Sample, 2> samples_;
  std::size_t current_ = 0;
  Agent::SimulatedBus& bus_;
  Agent::Slot slot_;
  std::optional<Sight> sight_;
  Kex::String8 fdl_;
  /// The change that was made and is not seen yet.
  std::optional<Sight> expected_;
  Kex::U64 missed_ = 0;
  Kex::U64 unexpected_ = 0;
};

}  // namespace Bench
