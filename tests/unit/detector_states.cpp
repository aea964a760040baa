// The slot's state machine on virtual time: what follows what, when, and with which verdict.
#include <nlohmann/json.hpp>
#include <sstream>

#include "agent/report/Report.h"
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Fru;
using busTest::Slot;

Fru const kGood;
Fru const kWithoutSerial{.serial = ""};
Fru const kWrongChecksum{.spoilt = 1};
Fru const kNewVersion{.areaVersion = 2};

/// What happens to a slot at a time; a negative one is before the identifier is handed over.
struct Event {
  double at;
  std::function<void(Slot&)> happen;
};

Event supplyAt(double at, Fru const& fru) {
  return {at, [=](Slot& slot) { slot.bus->supply = fru.supply(); }};
}
Event scriptAt(double at, char const* script) {
  return {at, [=](Slot& slot) { slot.bus->script = script; }};
}
Event activeAt(double at, bool on) {
  return {at, [=](Slot& slot) { slot.identifier->hasNotificationActiveIs(on); }};
}
Event movingAt(double at, bool on) {
  return {at, [=](Slot& slot) { slot.identifier->kexFwkActivityIs(on); }};
}

template <class... Events>
std::vector<Event> events(Events const&... all) {
  return {all...};
}

std::string timelineOf(std::string const& script, Fru const& fru, double until,
                       std::vector<Event> const& events) {
  Slot slot(script, fru);
  Slot::descriptorIs("stub", "P");
  for (Event const& event : events) {
    if (event.at >= 0) {
      slot.run(event.at);
    }
    event.happen(slot);
  }
  return slot.run(until).timeline;
}

TEST(DetectorStates, followOneAnotherInTime) {
  Event const quick{-0.5, [](Slot& slot) {
                      slot.identifier->pollIntervalIs(0.5);
                      slot.identifier->pollDelayIs(0.05);
                    }};
  Event const reviewed{-0.5, [](Slot& slot) { slot.identifier->reviewIntervalIs(2.5); }};
  struct {
    char const* what;
    char const* script;
    double until;
    char const* timeline;
    std::vector<Event> events = {};
    Fru fru = {};
  } const rows[] = {
      {"nothing, and a bus that hangs", "hh", 3.5, "P0 unreachable P2 unreachable"},
      {"other settings", "x*", 1.2, "P0 absent P0.5 P0.5 I0.55 I0.55 C0.55 identified C1.05",
       events(quick)},
      {"a review", "*", 5.3,
       "P0 P0 I0.2 I0.2 C0.2 identified C1.2 C2.2 P2.7 P2.7 I2.9 I2.9 C2.9 identified C3.9 C4.9",
       events(reviewed)},
      {"empty chunks in two identifications", "...000xxxx...0*", 2,
       "P0 P0 I0.2 I0.2 I0.2 I0.2 I0.2 I0.2 I0.2 I0.2 unreadable P1.2 P1.2 I1.4 I1.4 I1.4 C1.4 "
       "identified"},
      {"a supply that is pulled", ".....xxxxxx*", 4.3,
       "P0 P0 I0.2 I0.2 C0.2 identified C1.2 C1.45 C1.7 C1.95 P1.95 P2.95 absent P3.95 P3.95 "
       "I4.15 I4.15 C4.15 identified"},
      {"a supply that is away for a moment", ".....xxxxx*", 3.3,
       "P0 P0 I0.2 I0.2 C0.2 identified C1.2 C1.45 C1.7 C1.95 P1.95 P2.95 P2.95 "
       "I3.15 I3.15 C3.15 identified"},
      {"an answer after a failure", ".....x*", 2.1,
       "P0 P0 I0.2 I0.2 C0.2 identified C1.2 C1.45 P1.45 P1.45 I1.65 I1.65 C1.65 identified"},
      {"short answers of the same bytes", "....111", 3.1,
       "P0 P0 I0.2 I0.2 C0.2 identified C1.2 C2.2"},
      {"short answers, then of another byte", "....111*", 3,
       "P0 P0 I0.2 I0.2 C0.2 identified C1.2 C2.2 P2.2 P2.2 I2.4 I2.4 C2.4 identified",
       events(supplyAt(1.5, {.serial = "T1"}))},
      {"a swap between checks", "*", 3.5,
       "P0 P0 I0.2 I0.2 C0.2 identified C1.2 C2.2 P2.2 P2.2 I2.4 I2.4 C2.4 identified C3.4",
       events(supplyAt(1.5, {.serial = "S2"}))},
      {"other makers' MFR_IDs, each of them once", "*", 5,
       "P0 P0 I0.2 I0.2 C0.2 identified C1.2 C2.2 P2.2 P3.2 P4.2 P4.2 I4.4 I4.4 C4.4 identified",
       events(supplyAt(1.5, {.serial = "S2", .mfrId = "ACME 12"}),
              supplyAt(2.5, {.mfrId = "ACME 13"}), supplyAt(3.5, {}))},
      {"a swap of supplies without serial number", "*", 3,
       "P0 P0 I0.2 I0.2 C0.2 identified C1.2 C2.2 P2.2 P2.2 I2.4 I2.4 I2.4 C2.4 identified",
       events(supplyAt(1.5, {.serial = "", .units = 3})), kWithoutSerial},
      {"other serial numbers, and a check between that fails", "....f....0....f*", 3.5,
       "P0 P0 I0.2 I0.2 C0.2 P1 P1 I1.2 I1.2 C1.2 unreadable P2 P2 I2.2 I2.2 C2.2 "
       "P3 P3 I3.2 I3.2 C3.2 identified"},
      {"the header of another supply", "*", 3,
       "P0 P0 I0.2 C0.2 unsupportedVersion P1.2 P1.2 I1.4 C1.4 unsupportedVersion C2.4 "
       "P2.4 P2.4 I2.6 I2.6 C2.6 identified",
       events(supplyAt(1.5, {.areaVersion = 3}), supplyAt(2.5, {})), kNewVersion},
      {"off and on", "*", 3.5,
       "P0 P0 I0.2 I0.2 C0.2 identified P2.5 P2.5 I2.7 I2.7 C2.7 identified",
       events(activeAt(0.5, false), activeAt(2.5, true))},
      {"off while the supply settles", "..", 5, "P0 P0", events(activeAt(0.1, false))},
      {"off before a check is tried again", "....x", 5, "P0 P0 I0.2 I0.2 C0.2",
       events(activeAt(0.3, false))},
      {"handed over when off", "*", 0.5, "P0.4 P0.4",
       events(activeAt(-0.5, false), activeAt(0.4, true))},
      {"standing still", "..h*", 2.6, "P0 P0 I0.2 P2.5 P2.5",
       events(movingAt(0.5, false), movingAt(2.5, true))},
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
  Slot::descriptorIs("stub", "P");
  slot.bus->onAnswer = [&] {
    if (slot.bus->script == "*") {
      slot.bus->supply = second.supply();
    }
  };
  EXPECT_EQ(slot.run(1.5).timeline,
            "P0 P0 I0.2 I0.2 I0.2 C0.2 P1 P1 I1.2 I1.2 I1.2 C1.2 identified");
  EXPECT_EQ(slot.supply().product->serialNumber().view(), second.serial);
}

TEST(DetectorStates, repeatAUselessDetectionMoreAndMoreRarely) {
  struct {
    char const* what;
    double until;
    char const* polls;
    std::vector<Event> events = {};
  } const rows[] = {
      {"a supply that stays", 50, "P0 P1.2 P3.4 P7.6 P15.8 P26 P36.2 P46.4"},
      {"a poll fails", 11, "P0 P1.2 P3.4 P7.6 P8.6 P9.8", events(scriptAt(5, "..x*"))},
      {"an identification fails", 13, "P0 P1.2 P3.4 P7.6 P8.8 P10 P12.2",
       events(scriptAt(7.5, "..1*"))},
      {"a check fails", 9.1, "P0 P1.2 P3.4 P4.6 P5.8 P8", events(scriptAt(4, "0*"))},
      {"a good supply", 14, "P0 P1.2 P3.4 P7.6 P9.8 P11 P13.2",
       events(supplyAt(7, {}), supplyAt(9, {.serial = "S2", .spoilt = 1}))},
      {"retries of the first check take longer than the interval", 3, "P0 P1.7",
       events(scriptAt(0.1, "..hx*"))},
  };
  for (auto const& row : rows) {
    std::istringstream timeline(timelineOf("*", kWrongChecksum, row.until, row.events));
    std::string polls;
    for (std::string word, last; timeline >> word; last = word) {
      // Of the two transactions of each poll the first.
      polls += word.starts_with('P') && word != last ? " " + word : "";
    }
    EXPECT_EQ(polls.substr(1), row.polls) << row.what;
  }
}

TEST(DetectorStates, giveVerdictsWithReasons) {
  Fru const acme{.mfrId = "ACME 12"};
  Fru const headerVersion{.headerVersion = 2};
  Fru const noArea{.areaStart = 0};
  Fru const unknown{.part = "Q"};
  struct {
    char const* script;
    Fru const& fru;
    Kex::U64 transactions;
    char const* verdict;
    char const* found = R"("EMERSON" null null null null )";
  } const rows[] = {
      {"x", kGood, 1, "absent: reading MFR_ID failed: no acknowledge",
       R"(null null null null null )"},
      {"h", kGood, 1, "unreachable: reading MFR_ID failed: timeout",
       R"(null null null null null )"},
      {".", acme, 1, "unsupportedManufacturer: MFR_ID \"ACME 12\" is not supported",
       R"("ACME 12" null null null null )"},
      {".x", kGood, 2, "unreadable: reading the FRU common header failed: no acknowledge"},
      {".7", kGood, 2, "unreadable: reading the FRU common header was cut short: 7 of 8 bytes"},
      {"..", headerVersion, 2, "invalidHeader: the FRU common header has version 2, not 1"},
      {".f", kGood, 2,
       "invalidHeader: the FRU common header's checksum is 0xFE, where 0xFD would "
       "be right"},
      {"..", noArea, 2, "invalidHeader: the FRU common header names no product info area"},
      {"..xxxx", kGood, 6, "unreadable: reading the product info area failed: no acknowledge"},
      {"..1", kGood, 3, "unreadable: reading the product info area was cut short: 1 of 2 bytes"},
      {"...0000", kGood, 7,
       "unreadable: reading the product info area was cut short: 0 of 14 bytes"},
      {"....xxxx", kGood, 8, "unreadable: the first check failed: no acknowledge"},
      {"....0", kGood, 5, "unreadable: the first check was cut short: 0 of 2 bytes"},
      {"....f....f", kGood, 10, "unreadable: serial number is not stable",
       R"("EMERSON" false "S1" null null )"},
      {"....f....f", kWithoutSerial, 10, "unreadable: the product info area's header is not stable",
       R"("EMERSON" false "" null null )"},
      {"....", kNewVersion, 4,
       "unsupportedVersion: the product info area has format version 2, not 1",
       R"("EMERSON" false null null null )"},
      {".....", kWrongChecksum, 5,
       "invalidChecksum: the product info area's checksum is 0x4D, where 0x4C would be right",
       R"("EMERSON" true "S1" null null )"},
      {".....", unknown, 5,
       "unrecognised: no descriptor knows product name \"\", part number \"Q\"",
       R"("EMERSON" false "S1" null null )"},
      // The failed poll belongs to the detection before.
      {"x.....", kGood, 5, "identified: ",
       R"("EMERSON" false "S1" "SupportedPowerSupplyDescriptorBase" "fdl of stub" )"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.script + std::string(" ") + row.verdict);
    Slot slot(row.script, row.fru);
    Slot::descriptorIs("stub", "P");
    auto const& supply = slot.run(3).supply();
    Agent::JsonObject object;
    auto const json = nlohmann::json::parse(Agent::addSupply(object, supply).text());
    std::string found;
    for (auto const* key : {"mfrId", "hwError", "serialNumber", "descriptor", "fdl"}) {
      found += json[key].dump() + " ";
    }
    EXPECT_EQ(slot.verdict() + ": " + supply.reason.charPtr(), row.verdict);
    EXPECT_EQ(found, row.found);
    EXPECT_EQ(supply.transactions, row.transactions);
  }
}

}  // namespace
