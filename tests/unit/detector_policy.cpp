// What follows the end of a request, as the policy decides it.
#include "host/detector/Policy.h"

#include <gtest/gtest.h>

#include <limits>

namespace PowerSupplyDetector {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr auto kHealing = Hardware::PowerSupplySlot::Verdict::invalidChecksum;
constexpr auto kIdentified = Hardware::PowerSupplySlot::Verdict::identified;

/// Memory in which `repetitions` repetitions were scheduled, the last one at `now` (not at all: 0).
Memory memory(int repetitions, double now, unsigned mismatches, double lastReset) {
  Memory made{.backOff = {}, .mismatches = mismatches, .lastReset = lastReset};
  for (int i = 0; i < repetitions; ++i) {
    made.backOff.schedule(now);
  }
  return made;
}

struct Row {
  char const* what;
  Move (*after)(Situation const&);
  Memory before;
  Told told;
  Next next;
  double at;
  unsigned mismatches;
  /// When the repetition is due afterwards.
  double repetition;
};

// Everything happens at 100 s, with a poll interval of 2 s and a poll delay of 0.5 s.
TEST(Policy, WhatFollows) {
  using enum Told;
  Row const rows[] = {
      {"absent", [](auto& s) { return afterPoll(false, s); }, memory(2, 90, 1, 95), ending,
       Next::reset, 102, 0, kNever},
      {"present", [](auto& s) { return afterPoll(true, s); }, memory(2, 90, 1, 95), nothing,
       Next::identify, 100.5, 1, 92},
      {"given up", [](auto& s) { return afterIdentify({}, s); }, memory(1, 90, 1, 95), ending,
       Next::reset, 102, 1, kNever},
      {"identified", [](auto& s) { return afterIdentify(kIdentified, s); }, memory(1, 90, 1, 95),
       nothing, Next::check, 100, 1, kNever},
      {"may heal", [](auto& s) { return afterIdentify(kHealing, s); }, memory(0, 0, 0, 95), nothing,
       Next::check, 100, 0, 101},
      {"may heal, third time", [](auto& s) { return afterIdentify(kHealing, s); },
       memory(2, 90, 0, 95), nothing, Next::check, 100, 0, 104},
      {"may heal, sixth time", [](auto& s) { return afterIdentify(kHealing, s); },
       memory(5, 90, 0, 95), nothing, Next::check, 100, 0, 110},
      {"first check", [](auto& s) { return afterCheck(Checked::same, true, s); },
       memory(0, 0, 1, 95), found, Next::check, 102, 0, kNever},
      {"later check", [](auto& s) { return afterCheck(Checked::same, false, s); },
       memory(0, 0, 0, 95), nothing, Next::check, 102, 0, kNever},
      {"repetition before the next check",
       [](auto& s) { return afterCheck(Checked::same, true, s); }, memory(1, 100.5, 0, 95), found,
       Next::reset, 101.5, 0, 101.5},
      {"repetition after the next check",
       [](auto& s) { return afterCheck(Checked::same, false, s); }, memory(1, 101.5, 0, 95),
       nothing, Next::check, 102, 0, 102.5},
      {"gone at the first check", [](auto& s) { return afterCheck(Checked::gone, true, s); },
       memory(1, 90, 1, 95), ending, Next::reset, 102, 0, kNever},
      {"gone later", [](auto& s) { return afterCheck(Checked::gone, false, s); },
       memory(0, 0, 0, 95), nothing, Next::reset, 102, 0, kNever},
      {"another serial number",
       [](auto& s) { return afterCheck(Checked::otherSerialNumber, true, s); },
       memory(1, 90, 0, 95), nothing, Next::reset, 100, 1, kNever},
      {"another area header, soon after a reset",
       [](auto& s) { return afterCheck(Checked::otherAreaHeader, true, s); }, memory(0, 0, 0, 99.5),
       nothing, Next::reset, 101.5, 1, kNever},
      {"another one again", [](auto& s) { return afterCheck(Checked::otherSerialNumber, true, s); },
       memory(0, 0, 1, 95), unstable, Next::reset, 100, 2, kNever},
      {"another one again, of a supply that was told",
       [](auto& s) { return afterCheck(Checked::otherSerialNumber, false, s); },
       memory(0, 0, 1, 95), nothing, Next::reset, 100, 2, kNever},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.what);
    Move const move = row.after(
        {.now = 100, .timings = {.pollInterval = 2, .pollDelay = 0.5}, .memory = row.before});
    EXPECT_EQ(move.told, row.told);
    EXPECT_EQ(move.next, row.next);
    EXPECT_DOUBLE_EQ(move.at, row.at);
    EXPECT_EQ(move.memory.mismatches, row.mismatches);
    EXPECT_EQ(move.memory.backOff.due(), row.repetition);
    EXPECT_EQ(move.memory.lastReset, row.before.lastReset);
  }
}

}  // namespace

}  // namespace PowerSupplyDetector
