// A bus with room for one simulated supply.
#pragma once

#include <optional>

#include "agent/transport/SimulatedSupply.h"
#include "agent/transport/Timer.h"

namespace Agent {

/// A simulated SMBus. A transaction takes the time that its bytes take at 100 kHz, on the
/// framework's clock. The supply may come and go at any moment. A transaction costs no allocation.
class SimulatedBus final : public Smbus::Transport {
 public:
  /// With `supply` on it, or nothing.
  explicit SimulatedBus(std::optional<SimulatedSupply> const& supply = {});

  /// Puts a supply on the bus, or takes it away. The transaction that is under way with one
  /// that leaves fails at once.
  void supplyIs(std::optional<SimulatedSupply> const& supply);

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override;

 private:
  void finish();

  std::optional<SimulatedSupply> supply_;
  Timer timer_;
  Smbus::Reply reply_;
  Kex::U64 ticket_ = 0;
  /// Who waits for an answer; null when the bus is idle.
  Smbus::AnswerSink* sink_ = nullptr;
};

/// Seconds that `transaction` takes on the wire at 100 kHz when it ends with `reply`: nine bits a
/// byte (both addresses, command, counts, data), one bit each for start, repeated start and stop.
/// One that nobody acknowledges ends after the byte that is refused: the device address, or, where
/// `isPresent`, the command.
double wireTime(Smbus::Transaction const& transaction, Smbus::Reply const& reply, bool isPresent);

}  // namespace Agent
