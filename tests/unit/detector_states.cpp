// The slot's state machine on virtual time: what follows what, when, and with which verdict.
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Fru;
using busTest::Lines;
using busTest::Slot;

Fru const kWithoutSerial{.serial = ""};
Fru const kWrongChecksum{.spoilt = 1};
Fru const kNewVersion{.areaVersion = 2};

/// What happens to a slot at a time; a negative one is before the identifier is handed over.
struct Event {
  double at;
  std::function<void(Slot&)> happen;
};

Event at(double time, void (*happen)(Slot&)) { return {time, happen}; }

template <class... Events>
std::vector<Event> events(Events const&... all) {
  return {all...};
}

Event supplyAt(double at, Fru const& fru) {
  return {at, [=](Slot& slot) { slot.bus->supplyIs(fru.image()); }};
}

Event scriptAt(double at, char const* script) {
  return {at, [=](Slot& slot) { slot.bus->script = script; }};
}

std::string timelineOf(std::string const& script, Fru const& fru, double until,
                       std::vector<Event> const& events = {}) {
  Slot slot(script, fru);
  slot.descriptorIs("stub", "P");
  for (Event const& event : events) {
    if (event.at >= 0) {
      slot.run(event.at);
    }
    event.happen(slot);
  }
  return slot.run(until).timeline();
}

TEST(DetectorStates, followOneAnotherInTime) {
  auto const off = [](Slot& slot) { slot.identifier->hasNotificationActiveIs(false); };
  auto const on = [](Slot& slot) { slot.identifier->hasNotificationActiveIs(true); };
  auto const still = [](Slot& slot) { slot.identifier->kexFwkActivityIs(false); };
  auto const moving = [](Slot& slot) { slot.identifier->kexFwkActivityIs(true); };
  auto const quick = [](Slot& slot) {
    slot.identifier->pollIntervalIs(0.5);
    slot.identifier->pollDelayIs(0.05);
  };
  struct {
    char const* what;
    char const* script;
    double until;
    char const* timeline;
    std::vector<Event> events = {};
    Fru fru = {};
  } const rows[] = {
      {"a supply", "*", 3, "2P0 2I0.2 C0.2 identified C1.2 C2.2"},
      {"nothing", "xxx", 2.5, "P0 absent P1 absent P2 absent"},
      {"nothing, and a bus that hangs", "hh", 3.5, "P0 absent P2 absent"},
      {"a header lost", ".x*", 1.1, "2P0 unreadable 2P1"},
      {"a header cut short", ".1*", 1.1, "2P0 unreadable 2P1"},
      {"a header that is wrong", ".f*", 1.1, "2P0 invalidHeader 2P1"},
      {"other settings", "*", 0.7, "2P0 2I0.2 C0.2 identified C0.7", events(at(0, quick))},
      {"other settings from the start", "x*", 1.2, "P0 absent 2P0.5 2I0.55 C0.55 identified C1.05",
       events(at(-0.5, quick))},
      {"retries of an identification", "..xxx.xxx*", 1, "2P0 8I0.2 C0.2 identified"},
      {"an identification that hangs", "..hhhh*", 5.3, "2P0 I0.2 I1.2 I2.2 I3.2 unreadable 2P5.2"},
      {"an area header cut short", "..1*", 1.3, "2P0 I0.2 unreadable 2P1.2"},
      {"retries of the first check", "....xxx*", 2,
       "2P0 2I0.2 C0.2 C0.45 C0.7 C0.95 identified C1.95"},
      {"a check that hangs", "....h*", 2, "2P0 2I0.2 C0.2 C1.45 identified"},
      {"a first check that gives up", "....xxxx*", 2,
       "2P0 2I0.2 C0.2 C0.45 C0.7 C0.95 unreadable 2P1.95"},
      {"a first check cut short", "....1*", 1.3, "2P0 2I0.2 C0.2 unreadable 2P1.2"},
      {"a supply that is pulled", ".....xxxxx*", 4.3,
       "2P0 2I0.2 C0.2 identified C1.2 C1.45 C1.7 C1.95 P2.95 absent 2P3.95 2I4.15 C4.15 "
       "identified"},
      {"a later check cut short", ".....1*", 2.5,
       "2P0 2I0.2 C0.2 identified C1.2 2P2.2 2I2.4 C2.4 identified"},
      {"a swap between checks", "*", 3.5,
       "2P0 2I0.2 C0.2 identified C1.2 C2.2 2P2.2 2I2.4 C2.4 identified C3.4",
       events(supplyAt(1.5, {.serial = "S2"}))},
      {"a swap of supplies without serial number", "*", 3,
       "2P0 2I0.2 C0.2 identified C1.2 C2.2 2P2.2 3I2.4 C2.4 identified",
       events(supplyAt(1.5, {.serial = "", .units = 3})), kWithoutSerial},
      {"another serial number at the first check", "....f*", 1.5,
       "2P0 2I0.2 C0.2 2P1 2I1.2 C1.2 identified"},
      {"and at the second", "....f....f*", 2.5,
       "2P0 2I0.2 C0.2 2P1 2I1.2 C1.2 unreadable 2P2 2I2.2 C2.2 identified"},
      {"and a check between that fails", "....f....1....f*", 3.5,
       "2P0 2I0.2 C0.2 2P1 2I1.2 C1.2 unreadable 2P2.2 2I2.4 C2.4 2P3.2 2I3.4 C3.4 identified"},
      {"a supply that was read too early", "*", 2,
       "2P0 2I0.2 C0.2 invalidChecksum 2P1.2 2I1.4 C1.4 identified", events(supplyAt(1, {})),
       kWrongChecksum},
      {"the header of another supply", "*", 3,
       "2P0 I0.2 C0.2 unsupportedVersion 2P1.2 I1.4 C1.4 unsupportedVersion C2.4 2P2.4 2I2.6 C2.6 "
       "identified",
       events(supplyAt(1.5, {.areaVersion = 3}), supplyAt(2.5, {})), kNewVersion},
      {"off and on", "*", 3.5, "2P0 2I0.2 C0.2 identified 2P2.5 2I2.7 C2.7 identified",
       events(at(0.5, off), at(2.5, on))},
      {"off and on while a poll hangs", "h.*", 1.1, "P0 2P1", events(at(0.5, off), at(0.6, on))},
      {"off while the supply settles", "..", 5, "2P0", events(at(0.1, off))},
      {"off while an identification hangs", "..h", 5, "2P0 I0.2", events(at(0.5, off))},
      {"off before a check is tried again", "....x", 5, "2P0 2I0.2 C0.2", events(at(0.3, off))},
      {"handed over when off", "*", 0.5, "2P0.4", events(at(-0.5, off), at(0.4, on))},
      {"standing still", "..h*", 2.6, "2P0 I0.2 2P2.5", events(at(0.5, still), at(2.5, moving))},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(timelineOf(row.script, row.fru, row.until, row.events), row.timeline) << row.what;
  }
}

TEST(DetectorStates, neverDescribeAMixtureOfTwoSupplies) {
  // Same checksum, and each half of a serial number comes with a chunk of its own.
  Fru const first{.serial = "12AAAAAAAAAAAA34"};
  Fru const second{.serial = "21AAAAAAAAAAAA43"};
  Slot slot("....*", first);
  slot.descriptorIs("stub", "P");
  slot.bus->onAnswer = [&] {
    if (slot.bus->script == "*") {
      slot.bus->supplyIs(second.image());
    }
  };
  EXPECT_EQ(slot.run(1.5).timeline(), "2P0 3I0.2 C0.2 2P1 3I1.2 C1.2 identified");
  EXPECT_EQ(slot.supply().product->serialNumber.view(), second.serial);
}

/// The times of the polls that began a detection.
std::string polls(std::string const& timeline) {
  std::string times;
  std::istringstream words(timeline);
  for (std::string word; words >> word;) {
    if (auto const poll = word.find('P'); poll != std::string::npos) {
      times += word.substr(poll + 1) + " ";
    }
  }
  return times;
}

TEST(DetectorStates, repeatAUselessDetectionMoreAndMoreRarely) {
  struct {
    char const* what;
    Fru fru;
    std::vector<Event> events;
    double until;
    char const* polls;
  } const rows[] = {
      {"wrong checksum", kWrongChecksum, {}, 50, "0 1.2 3.4 7.6 15.8 26 36.2 46.4 "},
      {"new version", kNewVersion, {}, 50, "0 1.2 3.4 7.6 15.8 26 36.2 46.4 "},
      {"after a negative poll",
       kWrongChecksum,
       {scriptAt(5, "..x*")},
       11,
       "0 1.2 3.4 7.6 8.6 9.8 "},
      {"after a negative identification",
       kWrongChecksum,
       {scriptAt(7.5, "..1*")},
       13,
       "0 1.2 3.4 7.6 8.8 10 12.2 "},
      {"after a negative check", kWrongChecksum, {scriptAt(4, "1*")}, 9.1, "0 1.2 3.4 5.6 6.8 9 "},
      {"after a good supply",
       kWrongChecksum,
       {supplyAt(7, {}), supplyAt(9, {.serial = "S2", .spoilt = 1})},
       14,
       "0 1.2 3.4 7.6 9.8 11 13.2 "},
      // Retries of the first check take longer than the interval.
      {"after a check's end", kWrongChecksum, {scriptAt(0.1, "..hx*")}, 3, "0 1.7 "},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(polls(timelineOf("*", row.fru, row.until, row.events)), row.polls) << row.what;
  }
}

TEST(DetectorStates, giveVerdictsWithReasons) {
  constexpr auto kNone = "none";
  struct {
    std::string script;
    Fru fru;
    char const* verdict;
    char const* reason;
    Kex::U64 transactions;
    char const* mfrId = "EMERSON";
    char const* hwError = "none";
    char const* serial = kNone;
    char const* answeredMfrId = "EMERSON";
  } const rows[] = {
      {"x", {}, "absent", "reading MFR_ID failed: no acknowledge", 1, kNone},
      {"h", {}, "absent", "reading MFR_ID failed: timeout", 1, kNone},
      {".",
       {},
       "unsupportedManufacturer",
       "MFR_ID \"ACME 12\" is not supported",
       1,
       "ACME 12",
       kNone,
       kNone,
       "ACME 12"},
      {".x", {}, "unreadable", "reading the FRU common header failed: no acknowledge", 2},
      {".7", {}, "unreadable", "reading the FRU common header was cut short: 7 of 8 bytes", 2},
      {"..",
       {.headerVersion = 2},
       "invalidHeader",
       "the FRU common header has version 2, not 1",
       2},
      {".f", {}, "invalidHeader", "the FRU common header's checksum 0xfe is wrong", 2},
      {"..",
       {.areaStart = 0},
       "invalidHeader",
       "the FRU common header names no product info area",
       2},
      {"..xxxx", {}, "unreadable", "reading the product info area failed: no acknowledge", 6},
      {"..1", {}, "unreadable", "reading the product info area was cut short: 1 of 2 bytes", 3},
      {"...0000",
       {},
       "unreadable",
       "reading the product info area was cut short: 0 of 14 bytes",
       7},
      {"....xxxx", {}, "unreadable", "the first check failed: no acknowledge", 8},
      {"....1", {}, "unreadable", "the first check was cut short: 1 of 2 bytes", 5},
      {"....f....f", {}, "unreadable", "serial number is not stable", 10, "EMERSON", "no", "S1"},
      {"....f....f", kWithoutSerial, "unreadable", "the product info area's header is not stable",
       10, "EMERSON", "no", ""},
      {"....", kNewVersion, "unsupportedVersion",
       "the product info area has format version 2, not 1", 4, "EMERSON", "no"},
      {".....", kWrongChecksum, "invalidChecksum", "the product info area's checksum is wrong", 5,
       "EMERSON", "yes", "S1"},
      {".....",
       {.part = "Q"},
       "unrecognised",
       "no descriptor knows product name \"\", part number \"Q\"",
       5,
       "EMERSON",
       "no",
       "S1"},
      {".....", {}, "identified", "", 5, "EMERSON", "no", "S1"},
      // The failed poll belongs to the detection before.
      {"x.....", {}, "identified", "", 5, "EMERSON", "no", "S1"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.script + " " + row.reason);
    Slot slot(row.script, row.fru, row.answeredMfrId);
    slot.descriptorIs("stub", "P");
    for (double until = 0; !slot.bus->script.empty() && until < 10; until += 0.25) {
      slot.run(until);
    }
    slot.run(slot.now() + 1.05);
    auto const& supply = slot.supply();
    EXPECT_EQ(slot.verdict(), row.verdict);
    EXPECT_EQ(supply.reason, row.reason);
    EXPECT_EQ(supply.transactions, row.transactions);
    EXPECT_EQ(supply.mfrId.value_or(kNone), row.mfrId);
    EXPECT_EQ(supply.hwError ? (*supply.hwError ? "yes" : "no") : "none", std::string(row.hwError));
    EXPECT_EQ(supply.product ? supply.product->serialNumber : kNone, row.serial);
    bool const isIdentified = slot.verdict() == "identified";
    EXPECT_EQ(supply.fdl, isIdentified ? "fdl of stub" : "");
    EXPECT_EQ(supply.descriptor.value_or(kNone),
              isIdentified ? "SupportedPowerSupplyDescriptorBase" : kNone);
  }
}

}  // namespace
