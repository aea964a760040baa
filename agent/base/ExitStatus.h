// The program's exit status.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace Agent {

/// How a piece of work ended; the numbers are the program's exit statuses.
enum class Status : unsigned char {
  ok = 0,
  failed = 1,
  usage = 2,
  absent = 3,
  notIdentified = 4,
  interrupted = 130,
  terminated = 143,
};

/// What is known of a status.
struct StatusRow {
  Status status;
  /// For a person.
  char const* text;
};

/// Every status, in their order.
inline constexpr std::array kStatuses = {
    StatusRow{Status::ok, "all supplies are identified, or the run ended as it was asked to"},
    StatusRow{Status::failed,
              "something could not be opened, loaded or written, or a call was refused"},
    StatusRow{Status::usage,
              "the command line, a scenario, a configuration or a model file makes no sense"},
    StatusRow{Status::absent, "a source has no supply"},
    StatusRow{Status::notIdentified,
              "a supply answered but is not identified, a bus is in trouble, or an adapter cannot "
              "serve"},
    StatusRow{Status::interrupted, "interrupted by SIGINT"},
    StatusRow{Status::terminated, "ended by SIGTERM"},
};

/// The status of two pieces of work together: a signal wins over all, usage over failed, that over
/// notIdentified, that over absent.
constexpr Status worse(Status one, Status other) {
  constexpr std::array kOrder = {Status::ok,        Status::absent, Status::notIdentified,
                                 Status::failed,    Status::usage,  Status::interrupted,
                                 Status::terminated};
  static_assert(kOrder.size() == kStatuses.size(), "each status has its rank");
  return *std::max(std::ranges::find(kOrder, one), std::ranges::find(kOrder, other));
}

}  // namespace Agent
