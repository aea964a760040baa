// Kernel traces of i2c and smbus events: what becomes of each form, and what cannot be told.
#include <gtest/gtest.h>

#include "agent/base/Error.h"
#include "agent/base/Text.h"
#include "agent/recording/KernelTrace.h"

namespace {

/// The trace's buses after these lines, each "TIME EVENT", of an adapter that prints as its text.
std::map<std::string, Agent::RecordedSlot> traced(std::vector<std::string> const& lines) {
  Agent::KernelTrace trace;
  std::size_t number = 0;
  for (std::string const& line : lines) {
    trace.lineIs(line.starts_with("CPU") ? line : "  a task-7   [001] d..1.   " + line, ++number);
  }
  return trace.end();
}

std::string shown(Agent::RecordedTransaction const& one) {
  Agent::TransactionRecord const& record = one.record;
  std::string const written = Agent::hex(record.transaction.write.view());
  return Agent::hex(std::array{record.transaction.address.offset()}) +
         (written.empty() ? "" : " " + written) + " -> " +
         (!one.unknown.empty() ? "unknown"
          : record.isOk        ? Agent::hex(record.read.view())
                               : std::string(Smbus::rowOf(record.error).name));
}

/// What is told of i2c-1.
std::vector<std::string> told(std::vector<std::string> const& lines) {
  std::vector<std::string> told;
  auto const buses = traced(lines);
  if (auto const bus = buses.find("i2c-1"); bus != buses.end()) {
    for (auto const& transaction : bus->second.transactions) {
      told.push_back(shown(transaction));
    }
    for (std::string const& doubt : bus->second.doubts) {
      told.push_back(doubt.substr(0, doubt.find(':')) + "?");
    }
  }
  return told;
}

struct Case {
  char const* what;
  std::vector<std::string> lines;
  std::vector<std::string> told;
};

// The events of one transfer each, of an MFR_ID that says "HI".
std::vector<std::string> const kPlain = {
    "1.0: i2c_write: i2c-1 #0 a=058 f=0000 l=1 [99]", "1.0: i2c_read: i2c-1 #1 a=058 f=0001 l=4",
    "1.1: i2c_reply: i2c-1 #1 a=058 f=0001 l=4 [02-48-49-ff]", "1.1: i2c_result: i2c-1 n=2 ret=2"};
std::vector<std::string> const kCall = {
    "2.0: smbus_write: i2c-1 a=058 f=0000 c=b0 BLOCK_PROC_CALL l=2 [01-18]",
    "2.1: smbus_result: i2c-1 a=058 f=0000 c=b0 BLOCK_PROC_CALL wr res=0"};

std::vector<std::string> joined(std::vector<std::vector<std::string>> const& parts) {
  std::vector<std::string> all;
  for (auto const& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

/// `lines` with the last one ending in another way.
std::vector<std::string> ending(std::vector<std::string> lines, std::string const& result) {
  std::string& last = lines.back();
  last = last.substr(0, last.rfind('=') + 1) + result;
  return lines;
}

TEST(KernelTrace, Forms) {
  Case const cases[] = {
      {"plain I2C", kPlain, {"99 -> 024849"}},
      {"a message each, of other adapters and devices in between",
       {kPlain[0], "1.0: i2c_write: i2c-10 #0 a=058 f=0000 l=1 [99]", kPlain[1],
        "1.0: i2c_result: i2c-10 n=2 ret=-6", kPlain[2], kPlain[3],
        "1.2: i2c_write: i2c-1 #0 a=050 f=0000 l=1 [00]", "1.2: i2c_result: i2c-1 n=1 ret=1"},
       {"99 -> 024849"}},
      {"not acknowledged",
       ending({kPlain[0], kPlain[1], kPlain[3]}, "-6"),
       {"99 -> noAcknowledge"}},
      {"timed out", ending({kPlain[0], kPlain[1], kPlain[3]}, "-110"), {"99 -> timeout"}},
      {"half of it", ending({kPlain[0], kPlain[1], kPlain[3]}, "1"), {"99 -> other"}},
      {"a count that no block has",
       {kPlain[0], kPlain[1], "1.1: i2c_reply: i2c-1 #1 a=058 f=0001 l=4 [ff-ff-ff-ff]", kPlain[3]},
       {"99 -> badCount"}},
      {"a block read",
       {"1.0: smbus_read: i2c-1 a=058 f=0000 c=99 BLOCK_DATA",
        "1.1: smbus_reply: i2c-1 a=058 f=0000 c=99 BLOCK_DATA l=3 [02-48-49]",
        "1.1: smbus_result: i2c-1 a=058 f=0000 c=99 BLOCK_DATA rd res=0"},
       {"99 -> 024849"}},
      {"a process call, whose reply is no event", kCall, {"B0 0118 -> unknown"}},
      {"one that failed all the same", ending(kCall, "-110"), {"B0 0118 -> timeout"}},
      {"one that is carried out in plain I2C",
       {kCall[0], "2.0: i2c_write: i2c-1 #0 a=058 f=0000 l=3 [b0-01-18]",
        "2.0: i2c_read: i2c-1 #1 a=058 f=0401 l=1",
        "2.1: i2c_reply: i2c-1 #1 a=058 f=0401 l=3 [02-4a-4b]", "2.1: i2c_result: i2c-1 n=2 ret=2",
        kCall[1]},
       {"B0 0118 -> 024A4B"}},
      {"others to the device",
       joined(
           {{"1.0: i2c_write: i2c-1 #0 a=058 f=0000 l=1 [99]", "1.0: i2c_result: i2c-1 n=1 ret=1",
             "1.0: smbus_read: i2c-1 a=058 f=0000 c=88 WORD_DATA",
             "1.0: smbus_reply: i2c-1 a=058 f=0000 c=88 WORD_DATA l=2 [02-48]",
             "1.0: smbus_result: i2c-1 a=058 f=0000 c=88 WORD_DATA rd res=0"},
            kPlain}),
       {"99 -> 024849", "1?"}},
      {"begun before the trace",
       joined({{kPlain[2], kPlain[3], kCall[1]}, kPlain}),
       {"99 -> 024849", "3?"}},
      {"not ended in it", joined({kPlain, {kPlain[0], kPlain[1]}}), {"99 -> 024849", "5?"}},
      {"begun anew", joined({{kPlain[0]}, kPlain}), {"99 -> 024849", "1?"}},
      {"lost in the middle",
       {kPlain[0], kPlain[1], "CPU:1 [LOST 3 EVENTS]", kPlain[0], kPlain[1], kPlain[2], kPlain[3]},
       {"99 -> 024849", "1?", "3?"}},
      {"dropped before the result",
       joined({kPlain, kCall, {"CPU:0 [2 EVENTS DROPPED]"}}),
       {"99 -> 024849", "B0 0118 -> unknown", "7?"}},
      {"another address of ten bits",
       {"1.0: i2c_write: i2c-1 #0 a=058 f=0010 l=1 [99]", "1.0: i2c_result: i2c-1 n=1 ret=1"},
       {}},
  };
  for (Case const& one : cases) {
    EXPECT_EQ(told(one.lines), one.told) << one.what;
  }
}

TEST(KernelTrace, TimesCountFromTheFirstTransferToTheDevice) {
  auto const buses = traced(joined(
      {{"0.5: i2c_write: i2c-1 #0 a=050 f=0000 l=1 [00]", "0.5: i2c_result: i2c-1 n=1 ret=1"},
       kPlain,
       ending(kCall, "-6")}));
  auto const& transactions = buses.at("i2c-1").transactions;
  ASSERT_EQ(transactions.size(), 2U);
  EXPECT_NEAR(transactions[0].record.time, 0.1, 1e-9);
  EXPECT_NEAR(transactions[1].record.time, 1.1, 1e-9);
  EXPECT_EQ(transactions[1].line, 8U);
}

TEST(KernelTrace, Lines) {
  // A task may have any name.
  for (char const* const before :
       {"       psu-agent-1412    [002] ..... ", "psu-agent-1412  [002] ",
        "a [0] 1.0:-7 (   7) [000] d..1. ", "<...>-1 [000] .N.1. "}) {
    Agent::KernelTrace trace;
    for (std::string const& line : kPlain) {
      trace.lineIs(before + line + "\r", 1);
    }
    EXPECT_EQ(trace.end().size(), 1U) << before;
  }
  for (char const* const line : {"", "# tracer: nop", "cpus=4", " => ksys_ioctl",
                                 "a-1 [000] 1.0: sched_switch: i2c_read: ", "[",
                                 "a-1 [000] 1.0: i2c_readahead: 1", "a-1 [000] 1.0:"}) {
    Agent::KernelTrace trace;
    trace.lineIs(line, 1);
    EXPECT_THROW(trace.end(), Agent::UsageError) << line;
  }
  for (char const* const line : {"a-1 [000] 1.0: i2c_read: i2c-1 #1 a=058 f=0001",
                                 "a-1 [000] 1.0: i2c_result: i2c-1 n=2 ret=-99999",
                                 "a-1 [000] 1.0: i2c_reply: i2c-1 #1 a=058 f=0001 l=1 [0g]",
                                 "a-1 [000] 1.0: i2c_reply: i2c-1 #1 a=058 f=0001 l=1 [100]",
                                 "a-1 [000] 1.0: i2c_write: [FAILED TO PARSE] adapter_nr=1",
                                 "a-1 [000] 100: i2c_read: i2c-1 #1 a=058 f=1 l=1",
                                 "a-1 0d..1 12us : i2c_read: i2c-1 #1 a=058 f=0001 l=1",
                                 "a-1 [000] 1.0: i2c_read: i2c-99999999999 #1 a=058 f=0001 l=1"}) {
    Agent::KernelTrace trace;
    EXPECT_THROW(trace.lineIs(line, 1), Agent::UsageError) << line;
  }
}

}  // namespace
