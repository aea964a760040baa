// The figures of a run as text for a monitoring system.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "agent/report/Supply.h"
#include "host/smbus/ErrorKind.h"

namespace Agent {

/// How often a time was at most so long.
struct Histogram {
  /// Upper bounds in seconds; a last one, without an end, follows.
  static constexpr std::array kBounds = {0.5, 1.0, 2.0, 5.0, 10.0, 30.0, 60.0};

  void add(double seconds);

  /// How many times fell between the bound before and this one.
  std::array<Kex::U64, kBounds.size() + 1> counts{};
  double sum = 0;
};

/// The figures of one slot.
struct SlotMetrics {
  std::string slot;
  /// What was told last; none before the first verdict.
  std::optional<Supply> supply{};
  /// When that changed, in seconds of the clock.
  double lastChange = 0;
  Kex::U64 transactions = 0;
  /// Failed transactions by kind.
  std::array<Kex::U64, Smbus::kErrorKinds.size()> failures{};
  /// Detections that came to an end.
  Kex::U64 detections = 0;
  /// Those that found the supply again that was there.
  Kex::U64 reviews = 0;
  /// Identified supplies in the place of another one, whether or not the slot was empty between.
  Kex::U64 swaps = 0;
  /// From the first answer of a supply to its being identified, in seconds.
  Histogram recognition{};
};

/// The figures of a run.
struct Metrics {
  std::vector<SlotMetrics> slots{};
  /// Attempts to write or remove a published file that failed.
  Kex::U64 publishingFailures = 0;
  /// The clock's time, in seconds.
  double time = 0;
};

/// The metrics in the text format of Prometheus: each family once, with its help and type. Bytes of
/// a supply are the code points of their values.
std::string metricsText(Metrics const& metrics);

}  // namespace Agent
