// Faults of a bus, and what each kind of them does.
#pragma once

#include <optional>
#include <span>

#include "host/smbus/ErrorKind.h"

namespace Agent {

/// A way in which transactions go wrong.
struct Fault {
  /// Each is a row of `faultKinds`.
  enum class Kind : Kex::U8 {
    nack,   ///< fails at once; the device sees nothing of it
    hang,   ///< fails when the address's bus timeout is over; the device sees nothing of it
    count,  ///< the reply's count byte becomes `value`, and the data beyond it zero
    flip,   ///< the reply's byte number `byte` (0 is the count byte) is exclusive-ored with `value`
    late,   ///< fails when the bus timeout is over; the answer comes once the next one has begun
    kEnd,   ///< no kind
  };
  /// For `transactions`: all that follow. A nack of that many is a supply that disappeared.
  static constexpr Kex::U32 kForever = ~Kex::U32{0};

  Kind kind = Kind::nack;
  /// Applies to transactions that start at this time (seconds) or later.
  double at = 0;
  /// How many transactions it applies to.
  Kex::U32 transactions = 1;
  Kex::U8 byte = 0;
  Kex::U8 value = 0;
};

/// What is known of a kind of fault.
struct FaultKind {
  Fault::Kind kind;
  /// What scenarios call it; null for a kind that they do not have.
  char const* name = nullptr;
  /// The key of `byte` in scenarios; null where it has no meaning.
  char const* byteKey = nullptr;
  /// The key of `value`, as well, and the least that it may be.
  char const* valueKey = nullptr;
  unsigned leastValue = 0;
  /// How the transaction fails: a timeout when the bus timeout is over, anything else at once. None
  /// where it does not.
  std::optional<Smbus::ErrorKind> error{};
  /// Whether the device is asked. The answer to a transaction that failed comes too late.
  bool isAsked = true;
  /// What is done to the bytes of the answer; null for nothing.
  void (*change)(Fault const& fault, std::span<Kex::U8> answer) = nullptr;
};

/// All kinds, in their order.
std::span<FaultKind const> faultKinds();

}  // namespace Agent
