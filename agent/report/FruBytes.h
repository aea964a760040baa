// What is known of a supply's FRU data, from the transactions that read it.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "agent/recording/TransactionLog.h"

namespace Agent {

/// The FRU data that transactions read, byte by byte.
class FruBytes {
 public:
  /// Takes in what `record` read, if it is a successful read of FRU data.
  void recordIs(TransactionRecord const& record);

  /// The bytes from `start` on, at most `most`, up to the first that was not read. Addresses wrap
  /// at 256.
  std::vector<Kex::U8> from(Kex::U8 start, std::size_t most) const;

 private:
  std::array<std::optional<Kex::U8>, 256> bytes_;
};

/// Whether the transaction reads FRU data: a process call that sends one byte, the start.
bool isFruRead(Smbus::Transaction const& transaction);

}  // namespace Agent
