// What the program counts, and the text that a monitoring system reads.
#include <gmock/gmock.h>

#include <map>
#include <sstream>

#include "agent/report/Meter.h"
#include "host/kex/time/ActivityManager.h"
#include "tests/unit/ipmi_support.h"

namespace {

using namespace std::string_literals;
using Agent::Meter;
using Agent::Metrics;
using Agent::Supply;
using Agent::Verdict;
using Kex::String8;
using Smbus::ErrorKind;
using Smbus::Reply;

String8 bytes(std::string const& text) { return String8(std::string_view(text)); }

Supply identified(std::string const& serial, std::string const& fdl = "") {
  Supply supply;
  supply.verdict = Verdict::identified;
  supply.descriptor = "DS2900";
  supply.product = ipmiTest::idpromOf({"EMERSON", "", "", "", serial})->productInfo();
  supply.fdl = bytes(fdl);
  return supply;
}

Supply of(Verdict verdict) {
  Supply supply;
  supply.verdict = verdict;
  return supply;
}

/// What stands behind each series of the text.
std::map<std::string, std::string> seriesOf(Metrics const& metrics) {
  std::map<std::string, std::string> series;
  std::istringstream lines(metricsText(metrics));
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with('#')) {
      std::size_t const blank = line.rfind(' ');
      EXPECT_TRUE(series.emplace(line.substr(0, blank), line.substr(blank + 1)).second) << line;
    }
  }
  return series;
}

TEST(MetricsText, SuppliesAcrossSlots) {
  constexpr char const* kForward = "f1.physicalProperties = ( 'A', 1, 'frontToBackAirflow' )\n";
  constexpr char const* kBackward = "f1.physicalProperties = ( 'A', 1, 'backToFrontAirflow' )\n";
  struct {
    std::vector<Supply> supplies;
    char const *sharedSerials, *capacities, *airflows;
  } const rows[] = {
      {{}, "0", "0", "0"},
      {{of(Verdict::absent), of(Verdict::absent)}, "0", "0", "0"},
      {{identified("A", "\nfru.capacity = 750\n"), identified("B", "\nfru.capacity = 750\n")},
       "0",
       "1",
       "0"},
      {{identified("A", "\nfru.capacity = 750\n"), identified("A", "\nfru.capacity = 760\n")},
       "1",
       "2",
       "0"},
      {{identified(""), identified("")}, "0", "0", "0"},
      {{identified("A"), identified("A"), identified("A"), identified("B"), identified("B")},
       "2",
       "0",
       "0"},
      {{identified("A", "\n"s + kForward), identified("B", "\n"s + kForward)}, "0", "0", "1"},
      {{identified("A", "\n"s + kForward), identified("B", "\n"s + kBackward)}, "0", "0", "2"},
  };
  for (auto const& row : rows) {
    Metrics metrics;
    for (Supply const& supply : row.supplies) {
      metrics.slots.push_back({.slot = std::to_string(metrics.slots.size()), .supply = supply});
    }
    auto const series = seriesOf(metrics);
    EXPECT_EQ(series.at("psu_shared_serial_numbers"), row.sharedSerials);
    EXPECT_EQ(series.at("psu_distinct_capacities"), row.capacities);
    EXPECT_EQ(series.at("psu_distinct_airflows"), row.airflows);
  }
}

TEST(MetricsText, BytesOfASupplyAreEscaped) {
  Metrics const metrics{
      .slots = {{.slot = "A",
                 .supply = identified("\\\"\n\xE9", "\nfru.modelName = 'M'\nfru.capacity = 1\n")}}};
  EXPECT_EQ(seriesOf(metrics).count("psu_supply_info{slot=\"A\",descriptor=\"DS2900\",model=\"M\","
                                    "capacity=\"1\",serial_number=\"\\\\\\\"\\n\xC3\xA9\"}"),
            1U);
}

TEST(MetricsText, OneVerdictASlot) {
  auto const series =
      seriesOf({.slots = {{.slot = "A", .supply = of(Verdict::unreadable)}, {.slot = "B"}}});
  EXPECT_EQ(series.at(R"(psu_slot_verdict{slot="A",verdict="unreadable"})"), "1");
  EXPECT_EQ(series.at(R"(psu_slot_verdict{slot="A",verdict="absent"})"), "0");
  EXPECT_EQ(series.at(R"(psu_slot_verdict{slot="B",verdict="absent"})"), "0");
  EXPECT_EQ(series.at(R"(psu_slots{verdict="unreadable"})"), "1");
  EXPECT_EQ(series.at(R"(psu_slots{verdict="absent"})"), "0");
}

TEST(MetricsText, HistogramsAreCumulative) {
  Agent::SlotMetrics slot{.slot = "A"};
  for (double const seconds : {0.25, 0.5, 0.75, 100.0}) {
    slot.recognition.add(seconds);
  }
  auto const series = seriesOf({.slots = {slot}});
  EXPECT_EQ(series.at(R"(psu_recognition_seconds_bucket{slot="A",le="0.5"})"), "2");
  EXPECT_EQ(series.at(R"(psu_recognition_seconds_bucket{slot="A",le="60"})"), "3");
  EXPECT_EQ(series.at(R"(psu_recognition_seconds_bucket{slot="A",le="+Inf"})"), "4");
  EXPECT_EQ(series.at(R"(psu_recognition_seconds_count{slot="A"})"), "4");
  EXPECT_EQ(series.at(R"(psu_recognition_seconds_sum{slot="A"})"), "101.5");
}

/// A meter of one slot, on a clock of its own.
struct OneSlot : testing::Test {
  OneSlot() {
    meter.slotsAre({"A"});
    meter.onChangeIs([this] { ++changes; });
  }

  void after(double seconds) { clock().timeIs(clock().time() + seconds); }
  void answers() {
    Reply reply;
    reply.isOk = true;
    meter.transactionIs("A", reply);
  }
  void fails(ErrorKind kind) { meter.transactionIs("A", Reply::failed(kind)); }
  void isFound(Supply const& supply) { meter.supplyIs("A", supply); }
  Agent::SlotMetrics figures() const { return meter.metrics().slots.at(0); }
  double recognised() const { return figures().recognition.sum; }

  static Kex::Clock& clock() { return *Kex::activityManager().config().clock(); }

  double const start = clock().time();
  Meter meter;
  int changes = 0;
};

TEST_F(OneSlot, RecognitionBeginsWithTheFirstAnswer) {
  fails(ErrorKind::noAcknowledge);
  isFound(of(Verdict::absent));
  after(5);
  answers();
  after(0.25);
  fails(ErrorKind::timeout);
  answers();
  after(0.5);
  isFound(identified("1"));
  EXPECT_EQ(recognised(), 0.75);
  // A transaction that is spoilt begins nothing, whatever spoils it.
  fails(ErrorKind::noAcknowledge);
  answers();
  after(9);
  isFound(identified("1"));
  EXPECT_EQ(recognised(), 0.75);
  EXPECT_EQ(figures().transactions, 6U);
  EXPECT_EQ(figures().failures[static_cast<std::size_t>(ErrorKind::noAcknowledge)], 2U);
  EXPECT_EQ(figures().failures[static_cast<std::size_t>(ErrorKind::timeout)], 1U);
}

TEST_F(OneSlot, WhatCountsAsWhat) {
  struct {
    Supply supply;
    Kex::U64 reviews, swaps;
    int changes;
  } const rows[] = {
      {of(Verdict::absent), 0, 0, 1},
      {of(Verdict::absent), 0, 0, 1},
      {identified("1"), 0, 0, 2},
      {identified("1"), 1, 0, 2},
      {identified("2"), 1, 1, 3},
      {of(Verdict::absent), 1, 1, 4},
      {identified("2"), 1, 1, 5},
      {of(Verdict::unreachable), 1, 1, 6},
      {identified("1"), 1, 2, 7},
      {identified("1", "another"), 1, 3, 8},
      {identified("1", "another"), 2, 3, 8},
  };
  Kex::U64 detections = 0;
  for (auto const& row : rows) {
    int const before = changes;
    after(1);
    isFound(row.supply);
    Agent::SlotMetrics const now = figures();
    EXPECT_EQ(now.detections, ++detections);
    EXPECT_EQ(now.reviews, row.reviews) << detections;
    EXPECT_EQ(now.swaps, row.swaps) << detections;
    EXPECT_EQ(changes, row.changes) << detections;
    if (changes != before) {
      EXPECT_EQ(now.lastChange, clock().time());
    }
  }
}

TEST_F(OneSlot, FiguresOfSlotsThatStayGoOn) {
  answers();
  meter.slotsAre({"A", "B"});
  EXPECT_EQ(figures().transactions, 1U);
  meter.slotsAre({"B"});
  meter.slotsAre({"A"});
  EXPECT_EQ(figures().transactions, 0U);
}

}  // namespace
