// Recordings: written, read back and played; what does not fit is refused by line and value.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "agent/Error.h"
#include "agent/transport/Recorder.h"
#include "agent/transport/ReplayTransport.h"
#include "tests/unit/agent_transport.h"

namespace {

using Agent::ReplayTransport;
using agentTest::Answers;
using agentTest::fruRead;
using agentTest::mfrIdRead;
using testing::DoubleEq;
using testing::ElementsAre;

class Recordings : public testing::Test {
 protected:
  ~Recordings() override { std::filesystem::remove(file_); }

  /// Why `place` cannot be opened, less the file's name.
  std::string refusal(std::string const& slot = "") const {
    try {
      ReplayTransport const transport(file_ + slot);
    } catch (Agent::Failure const& failure) {
      std::string const text = failure.what();
      return text.starts_with(file_) ? text.substr(file_.size()) : text;
    }
    return "accepted";
  }
  std::string refusalOf(std::string const& text) const {
    std::ofstream(file_, std::ios::binary) << text;
    return refusal();
  }

  std::string file_ = testing::TempDir() + "recording" + std::to_string(getpid());
};

Agent::TransactionRecord record(double time, Smbus::Transaction const& transaction,
                                Smbus::Block const& read) {
  return {.time = time,
          .request = "identifySupply",
          .transaction = transaction,
          .isOk = read.length != 0,
          .read = read,
          .failure = read.length != 0 ? "" : "no acknowledge"};
}

TEST_F(Recordings, PlayBackWhatWasRecorded) {
  double const begin = Agent::Timer::now();
  double const times[] = {begin + 0.1, begin + 1.0 / 3, begin + 2};
  {
    Agent::Recorder recorder(file_);
    recorder.recordIs("A", record(times[0], mfrIdRead(), {.bytes = {2, 0xE1, 0}, .length = 3}));
    recorder.recordIs("B", record(times[0], fruRead(8), {}));
    recorder.recordIs("A", record(times[1], fruRead(16), {}));
    recorder.recordIs("A", record(times[2], fruRead(16), {.bytes = {1, 9}, .length = 2}));
  }
  EXPECT_EQ(refusal(), ": name one of its slots as FILE#SLOT: A, B");
  EXPECT_EQ(refusal("#C"), ": there is no slot C in it, only A, B");
  ReplayTransport transport(file_ + "#A");
  Answers answers;
  std::vector<double> ends;
  for (Kex::U64 ticket = 1; ticket <= 4; ++ticket) {
    transport.start(ticket == 1 ? mfrIdRead() : fruRead(16), ticket, answers);
    if (double const next = Kex::activityManager().config().clock()->nextDeadline(); ticket <= 3) {
      ends.push_back(next);
      Kex::activityManager().runUntil(next);
    }
  }
  agentTest::pass(10);
  EXPECT_THAT(answers.texts, ElementsAre("1 02E100", "2 no acknowledge", "3 0109"));
  EXPECT_THAT(ends, ElementsAre(DoubleEq(times[0]), DoubleEq(times[1]), DoubleEq(times[2])));
}

TEST_F(Recordings, RefuseARequestThatWasNotRecorded) {
  { Agent::Recorder(file_).recordIs("A", record(0, fruRead(16), {})); }
  Smbus::Transaction shorter = fruRead(16);
  shorter.readLength = 1;
  for (Smbus::Transaction const& other : {fruRead(17), mfrIdRead(), shorter}) {
    ReplayTransport transport(file_);
    Answers answers;
    EXPECT_THROW(transport.start(other, 1, answers), Agent::Failure);
  }
  try {
    Answers answers;
    ReplayTransport(file_).start(mfrIdRead(), 1, answers);
  } catch (Agent::Failure const& failure) {
    EXPECT_EQ(failure.what(),
              file_ +
                  ":2: the recorded request (device 0x58, command 0xb0, 0110 "
                  "written, 17 bytes read) is not the one that is asked for (device "
                  "0x58, command 0x99, nothing written, 33 bytes read)");
  }
}

TEST_F(Recordings, RefuseWhatDoesNotFit) {
  std::string const header = "{\"format\":\"psu-agent recording\",\"version\":1}\n";
  std::string const line =
      R"({"time":1,"slot":"A","event":"transaction","request":"r","device":88,"command":176,)"
      R"("write":"0110","readLength":3,"read":"020102","status":3,"failure":null})"
      "\n";
  auto const with = [&](std::string const& from, std::string const& to) {
    std::string changed = line;
    return changed.replace(line.find(from), from.size(), to);
  };
  EXPECT_EQ(refusalOf(header + line), "accepted");

  struct Row {
    std::string text;
    std::string refusal;
  };
  Row const files[] = {
      {"", ":1: no JSON: "},
      {header, ": there is no transaction in it"},
      {"{\"format\":\"x\",\"version\":1}\n", ":1: format: this is no psu-agent recording"},
      {"{\"format\":\"psu-agent recording\",\"version\":2}\n", ":1: version: 2 is no "},
      {line, ":1: the document: unknown key \"time\""},
      {header + line + header, ":3: the document: unknown key \"format\""},
      {header + line + "{\"time\":", ":3: the line is cut short"},
      {header + line + "\n", ":3: no JSON"},
      {header + line + "[1]\n", ":3: the document: [1] is no object"},
      {header + std::string(70000, ' ') + line, ":2: longer than 65536 bytes"},
      {header + line + with("1,", "0.5,"), ":3: time: earlier than line 2"},
  };
  for (Row const& row : files) {
    EXPECT_EQ(refusalOf(row.text).substr(0, row.refusal.size()), row.refusal) << row.text;
  }
  struct Change {
    std::string from;
    std::string to;
    std::string refusal;
  };
  Change const changes[] = {
      {"\"time\":1", "\"time\":-1", "time: -1 is no number"},
      {"\"time\":1", "\"time\":1e999", "no JSON"},
      {"\"time\":1", "\"time\":\"1\"", "time: \"1\" is no number"},
      {"\"A\"", "7", "slot: 7 is no string"},
      {"transaction", "supply", "event: is not \"transaction\""},
      {"88", "128", "device: 128 is no whole number"},
      {"176", "17.5", "command: 17.5 is no whole number"},
      {"0110", "011", "write: 3 hexadecimal digits"},
      {"0110", "0x10", "write: \"0x\" is no byte"},
      {"0110", std::string(68, '0'), "write: 68 hexadecimal digits"},
      {":3,\"read\"", ":34,\"read\"", "readLength: 34 is no whole number"},
      {"020102", "02010203", "read: 8 hexadecimal digits"},
      {"020102", "", "read: 0 hexadecimal digits"},
      {"\"020102\"", "null", "read: the status says otherwise"},
      {"\"status\":3", "\"status\":2", "read: the status says otherwise"},
      {"\"status\":3", "\"status\":1", "status: 1 is no whole number"},
      {"\"status\":3,", "", "the document: the key \"status\" is missing"},
      {"\"failure\"", "\"error\"", "the document: unknown key \"error\""},
  };
  for (Change const& change : changes) {
    std::string const refusal = ":2: " + change.refusal;
    EXPECT_EQ(refusalOf(header + with(change.from, change.to)).substr(0, refusal.size()), refusal);
  }
}

TEST_F(Recordings, TellWhichFileCannotBeOpened) {
  EXPECT_EQ(refusal(), ": cannot open: No such file or directory");
  EXPECT_THROW(Agent::Recorder("/nonexistent/recording"), Agent::Failure);
  EXPECT_THROW(Agent::Recorder("/dev/full"), Agent::Failure);
}

}  // namespace
