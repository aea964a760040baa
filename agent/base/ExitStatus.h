// The program's exit status.
#pragma once

namespace Agent {

/// How a piece of work ended; the numbers are the program's exit statuses.
enum class Status : unsigned char {
  ok = 0,             ///< all identified, or the run ended as asked
  failed = 1,         ///< something could not be opened, loaded or written, or a call threw
  usage = 2,          ///< the command line does not make sense
  absent = 3,         ///< a source has no supply
  notIdentified = 4,  ///< a supply answered but is not identified, or an adapter cannot serve
};

/// The status of two pieces of work together: usage wins over failed, failed over notIdentified,
/// that over absent.
constexpr Status worse(Status one, Status other) {
  constexpr unsigned char kRank[] = {0, 3, 4, 1, 2};
  auto const rank = [&](Status status) { return kRank[static_cast<unsigned char>(status)]; };
  return rank(one) < rank(other) ? other : one;
}

}  // namespace Agent
