// What follows the end of a request, as the policy decides it.
#include "host/detector/Policy.h"

#include <gtest/gtest.h>

#include <limits>
#include <string_view>

#include "host/detector/Detection.h"

namespace PowerSupplyDetector {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr Outcome kAbsent{.verdict = Verdict::absent};
constexpr Outcome kUnreadable{.verdict = Verdict::unreadable};
constexpr Outcome kBadChecksum{.verdict = Verdict::invalidChecksum, .texts = 7};
constexpr Outcome kUnknown{.verdict = Verdict::unrecognised, .texts = 5};
constexpr Outcome kIdentified{.verdict = Verdict::identified, .texts = 3};

/// Of what was remembered: `repetitions` of a detection scheduled, the last one at `scheduled`.
struct Before {
  std::optional<Outcome> told{};
  std::optional<Outcome> unconfirmed{};
  int repetitions = 0;
  double scheduled = 90;
  Kex::U8 mismatches = 0;
  double lastReset = 95;
  std::optional<double> firstCheck{};
};

struct Row {
  char const* what;
  Ending ending;
  Before before;
  Told told;
  Next next;
  double at;
  std::optional<Outcome> unconfirmed;
  double repetition = kNever;
  Kex::U8 mismatches = 0;
};

Ending checkEnding(Checked checked, bool isFirst, Outcome found, bool hasSerialNumber = true,
                   bool hadFailures = false) {
  return CheckEnding{.checked = checked,
                     .isFirst = isFirst,
                     .hadFailures = hadFailures,
                     .hasSerialNumber = hasSerialNumber,
                     .found = found};
}

// Everything happens at 100 s: poll interval 2 s, poll delay 0.5 s, review interval 30 s.
TEST(Policy, WhatFollows) {
  using enum Checked;
  Ending const absent = PollEnding{kAbsent};
  Ending const present = PollEnding{};
  Ending const givenUp = IdentifyEnding{.outcome = kUnreadable};
  auto const read = [](Outcome outcome) {
    return IdentifyEnding{.outcome = outcome, .isComplete = true};
  };
  std::optional<Outcome> const none;
  Before const identified{.told = kIdentified};
  Before const checked{.told = kIdentified, .firstCheck = 80};
  Row const rows[] = {
      {"the first verdict",
       absent,
       {.repetitions = 2, .mismatches = 1},
       Told::ending,
       Next::reset,
       102,
       none},
      {"absent once after identified", absent, identified, Told::nothing, Next::reset, 102,
       kAbsent},
      {"absent twice",
       absent,
       {.told = kIdentified, .unconfirmed = kAbsent},
       Told::ending,
       Next::reset,
       102,
       none},
      {"absent after unreadable",
       absent,
       {.told = kIdentified, .unconfirmed = kUnreadable},
       Told::nothing,
       Next::reset,
       102,
       kAbsent},
      {"absent as before", absent, {.told = kAbsent}, Told::ending, Next::reset, 102, none},
      {"present",
       present,
       {.unconfirmed = kAbsent, .repetitions = 2, .mismatches = 1},
       Told::nothing,
       Next::identify,
       100.5,
       kAbsent,
       92,
       1},
      {"given up",
       givenUp,
       {.repetitions = 1, .mismatches = 1},
       Told::ending,
       Next::reset,
       102,
       none,
       kNever,
       1},
      {"given up once after identified", givenUp, identified, Told::nothing, Next::reset, 102,
       kUnreadable},
      {"read",
       read(kIdentified),
       {.repetitions = 1, .mismatches = 1},
       Told::nothing,
       Next::check,
       100,
       none,
       kNever,
       1},
      {"may heal", read(kBadChecksum), {}, Told::nothing, Next::check, 100, none, 101},
      {"may heal, third time",
       read(kBadChecksum),
       {.repetitions = 2},
       Told::nothing,
       Next::check,
       100,
       none,
       104},
      {"may heal, sixth time",
       read(kBadChecksum),
       {.repetitions = 5},
       Told::nothing,
       Next::check,
       100,
       none,
       110},
      {"first check",
       checkEnding(same, true, kIdentified),
       {.mismatches = 1},
       Told::found,
       Next::check,
       102,
       none},
      {"first check of the same again",
       checkEnding(same, true, kIdentified),
       {.told = kIdentified, .unconfirmed = kAbsent},
       Told::found,
       Next::check,
       102,
       none},
      {"first check of what is not confirmed", checkEnding(same, true, kUnknown), identified,
       Told::nothing, Next::reset, 102, kUnknown},
      {"first check of what is confirmed",
       checkEnding(same, true, kUnknown),
       {.told = kIdentified, .unconfirmed = kUnknown},
       Told::found,
       Next::check,
       102,
       none},
      {"first check of another unknown one",
       checkEnding(same, true, kUnknown),
       {.told = Outcome{.verdict = Verdict::unrecognised, .texts = 6}},
       Told::nothing,
       Next::reset,
       102,
       kUnknown},
      {"later check", checkEnding(same, false, kIdentified), checked, Told::nothing, Next::check,
       102, none},
      {"review is due",
       checkEnding(same, false, kIdentified),
       {.told = kIdentified, .firstCheck = 71.5},
       Told::nothing,
       Next::reset,
       101.5,
       none},
      {"review is due, soon after a reset",
       checkEnding(same, false, kIdentified),
       {.told = kIdentified, .lastReset = 99, .firstCheck = 70.5},
       Told::nothing,
       Next::reset,
       101,
       none},
      {"repetition soon after a reset",
       checkEnding(same, true, kBadChecksum),
       {.repetitions = 1, .scheduled = 99.2, .lastReset = 99},
       Told::found,
       Next::reset,
       101,
       none,
       100.2},
      {"review without a serial number",
       checkEnding(same, false, kIdentified, false),
       {.told = kIdentified, .firstCheck = 96.5},
       Told::nothing,
       Next::reset,
       101.5,
       none},
      {"no review yet without a serial number",
       checkEnding(same, false, kIdentified, false),
       {.told = kIdentified, .firstCheck = 97.5},
       Told::nothing,
       Next::check,
       102,
       none},
      {"repetition before the next check",
       checkEnding(same, true, kBadChecksum),
       {.repetitions = 1, .scheduled = 100.5},
       Told::found,
       Next::reset,
       101.5,
       none,
       101.5},
      {"repetition after the next check, no review",
       checkEnding(same, false, kBadChecksum, false),
       {.told = kBadChecksum, .repetitions = 1, .scheduled = 101.5, .firstCheck = 10},
       Told::nothing,
       Next::check,
       102,
       none,
       102.5},
      {"an answer after a failure", checkEnding(same, false, kIdentified, true, true), checked,
       Told::nothing, Next::reset, 100, none},
      {"an answer after a failure, soon after a reset",
       checkEnding(same, false, kIdentified, true, true),
       {.told = kIdentified, .lastReset = 99.5, .firstCheck = 99.7},
       Told::nothing,
       Next::reset,
       101.5,
       none},
      {"gone at the first check",
       checkEnding(gone, true, kIdentified),
       {.repetitions = 1, .mismatches = 1},
       Told::ending,
       Next::reset,
       100,
       none},
      {"gone at the first check after identified", checkEnding(gone, true, kIdentified), identified,
       Told::nothing, Next::reset, 100, kUnreadable},
      {"gone later", checkEnding(gone, false, kIdentified), checked, Told::nothing, Next::reset,
       100, none},
      {"gone soon after a reset",
       checkEnding(gone, false, kIdentified),
       {.told = kIdentified, .lastReset = 99, .firstCheck = 99.2},
       Told::nothing,
       Next::reset,
       101,
       none},
      {"another serial number",
       checkEnding(otherSerialNumber, true, kIdentified),
       {.repetitions = 1},
       Told::nothing,
       Next::reset,
       100,
       none,
       kNever,
       1},
      {"another area header, soon after a reset",
       checkEnding(otherAreaHeader, true, kIdentified),
       {.lastReset = 99.5},
       Told::nothing,
       Next::reset,
       101.5,
       none,
       kNever,
       1},
      {"another one again",
       checkEnding(otherSerialNumber, true, kIdentified),
       {.mismatches = 1},
       Told::unstable,
       Next::reset,
       100,
       none,
       kNever,
       2},
      {"another one again after identified",
       checkEnding(otherSerialNumber, true, kIdentified),
       {.told = kIdentified, .mismatches = 1},
       Told::nothing,
       Next::reset,
       100,
       kUnreadable,
       kNever,
       2},
      {"another one of a supply that was told",
       checkEnding(otherSerialNumber, false, kIdentified),
       {.told = kIdentified, .mismatches = 1},
       Told::nothing,
       Next::reset,
       100,
       none,
       kNever,
       2},
      {"nothing ended yet", Ending{}, {.lastReset = 99}, Told::nothing, Next::reset, 101, none},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.what);
    Situation situation{.now = 100,
                        .timings = {.pollInterval = 2, .pollDelay = 0.5, .reviewInterval = 30},
                        .memory = {}};
    Memory& memory = situation.memory;
    for (int i = 0; i < row.before.repetitions; ++i) {
      memory.backOff.schedule(row.before.scheduled, situation.timings);
    }
    memory.lastReset = row.before.lastReset;
    memory.firstCheck = row.before.firstCheck;
    memory.told = row.before.told;
    memory.unconfirmed = row.before.unconfirmed;
    memory.mismatches = row.before.mismatches;
    Move const move = after(row.ending, situation);
    EXPECT_EQ(move.told, row.told);
    EXPECT_EQ(move.next, row.next);
    EXPECT_DOUBLE_EQ(move.at, row.at);
    EXPECT_EQ(move.memory.unconfirmed, row.unconfirmed);
    EXPECT_EQ(move.memory.backOff.due(), row.repetition);
    EXPECT_EQ(move.memory.mismatches, row.mismatches);
    EXPECT_EQ(move.memory.lastReset, row.before.lastReset);
  }
}

TEST(Policy, WhatCountsAsASerialNumber) {
  using namespace std::string_view_literals;
  for (auto const blank : {""sv, "  "sv, "\t \0\0"sv, "\xFF\xFF\xFF"sv}) {
    EXPECT_FALSE(hasSerialNumber(Kex::String8(blank))) << blank;
  }
  for (auto const text : {"0"sv, " 1"sv, "\xFF\xFE"sv, "\0A"sv}) {
    EXPECT_TRUE(hasSerialNumber(Kex::String8(text))) << text;
  }
}

}  // namespace

}  // namespace PowerSupplyDetector
