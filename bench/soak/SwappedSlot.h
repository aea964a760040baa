// A slot whose supply is swapped over and over.
#pragma once

#include <array>
#include <optional>

#include "agent/slots/Slot.h"
#include "agent/transport/SimulatedBus.h"
#include "bench/support/Sample.h"

namespace Bench {

/// A simulated slot on virtual time, in which every change that is seen must be one that was made.
class SwappedSlot {
 public:
  /// Cycles that differ from one another: two models, each pulled first or exchanged at once.
  static constexpr Kex::U64 kRound = 4;

  explicit SwappedSlot(Agent::Plugin const& plugin)
      : SwappedSlot(plugin, std::make_unique<Agent::SimulatedBus>()) {}

  /// Swaps in a supply with the serial number `number`, waits until that is seen, and leaves the
  /// supply alone for up to two seconds. Before it every other time the old one is pulled, and the
  /// slot left empty for as long. How long changes from number to number, so that a swap meets
  /// every moment of a check and of a poll.
  void swap(Kex::U64 number);

  /// Changes that were made and not seen.
  Kex::U64 missed() const { return missed_; }
  /// Changes that were seen and not made, second sights of one among them.
  Kex::U64 unexpected() const { return unexpected_; }

 private:
  using Supply = Agent::Supply;

  /// What a change is known by, as for a person who watches the slot.
  struct Sight {
    Hardware::PowerSupplySlot::Verdict verdict;
    Kex::String8 serialNumber;
    Kex::String8 fdl;
    bool operator==(Sight const&) const = default;
  };
  struct Expected {
    Hardware::PowerSupplySlot::Verdict verdict;
    Kex::String8 serialNumber;
  };

  SwappedSlot(Agent::Plugin const& plugin, std::unique_ptr<Agent::SimulatedBus> bus);

  static Expected expectedOf(Sample const& sample);
  void handleSupply(Supply const& supply);
  void change(std::optional<Agent::SimulatedSupply> const& supply, Expected expected,
              double leftAlone);

  std::array<Sample, 2> samples_;
  Agent::SimulatedBus& bus_;
  Agent::Slot slot_;
  std::optional<Sight> sight_;
  /// The change that was made and is not seen yet.
  std::optional<Expected> expected_;
  Kex::U64 missed_ = 0;
  Kex::U64 unexpected_ = 0;
};

}  // namespace Bench
