// What is known of a supply's FRU data.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

#include "agent/recording/TransactionLog.h"

namespace Agent {

/// FRU data byte by byte: what transactions read of it, or a file has of it.
class FruBytes {
 public:
  /// Takes in what `record` read, if it is a successful read of FRU data.
  void recordIs(TransactionRecord const& record);

  /// Takes in what a one-byte offset reaches of `image`, from address 0 on.
  void imageIs(std::span<Kex::U8 const> image);

  /// The bytes from `start` on, at most `most`, up to the first that was not read. Addresses wrap
  /// at 256.
  std::vector<Kex::U8> from(Kex::U8 start, std::size_t most) const;

 private:
  std::array<std::optional<Kex::U8>, 256> bytes_;
};

/// Whether the transaction reads FRU data: a process call that sends one byte, the start.
bool isFruRead(Smbus::Transaction const& transaction);

}  // namespace Agent
