// The kinds of failed transactions.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "host/kex/base/Types.h"

namespace Smbus {

/// Why a transaction failed; `kErrorKinds` has what is known of each.
enum class ErrorKind : Kex::U8 {
  noAcknowledge,    ///< a byte was not acknowledged
  timeout,          ///< it took longer than the bus timeout
  arbitrationLost,  ///< another master had the bus
  badCount,         ///< the device announced more bytes than a block has
  busGone,          ///< there is no way to the bus any more
  addressHeld,      ///< somebody else on this machine keeps the address
  unsupported,      ///< the bus cannot carry out such a transaction
  busBusy,          ///< the bus did not become free
  other,            ///< anything else
  kEnd,             ///< no kind
};

/// What is known of a kind.
struct ErrorKindRow {
  ErrorKind kind;
  /// What JSON calls it.
  std::string_view name;
  /// For a person.
  std::string_view text;
  /// Whether it proves that there is no device at the address.
  bool provesAbsence = false;
};

inline constexpr auto kErrorKinds = std::to_array<ErrorKindRow>({
    {ErrorKind::noAcknowledge, "noAcknowledge", "no acknowledge", true},
    {ErrorKind::timeout, "timeout", "timeout"},
    {ErrorKind::arbitrationLost, "arbitrationLost", "arbitration lost"},
    {ErrorKind::badCount, "badCount", "bad count byte"},
    {ErrorKind::busGone, "busGone", "the adapter has gone"},
    {ErrorKind::addressHeld, "addressHeld", "the address is held by a kernel driver"},
    {ErrorKind::unsupported, "unsupported", "unsupported by the adapter"},
    {ErrorKind::busBusy, "busBusy", "the bus is busy"},
    {ErrorKind::other, "other", "failed"},
});

/// The row of `kind`.
constexpr ErrorKindRow const& rowOf(ErrorKind kind) {
  return kErrorKinds[static_cast<std::size_t>(kind)];
}

/// The kind that JSON calls `name`; none when there is no such kind.
constexpr std::optional<ErrorKind> errorKindOf(std::string_view name) {
  for (ErrorKindRow const& row : kErrorKinds) {
    if (row.name == name) {
      return row.kind;
    }
  }
  return std::nullopt;
}

static_assert(
    [] {
      for (std::size_t i = 0; i < kErrorKinds.size(); ++i) {
        if (kErrorKinds[i].kind != static_cast<ErrorKind>(i) ||
            errorKindOf(kErrorKinds[i].name) != kErrorKinds[i].kind) {
          return false;
        }
      }
      return kErrorKinds.size() == static_cast<std::size_t>(ErrorKind::kEnd);
    }(),
    "one row a kind, in their order, each with a name of its own");

}  // namespace Smbus
