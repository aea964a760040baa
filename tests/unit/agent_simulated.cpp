// The simulated supply and its bus: what they answer, when, and what an insertion or removal does.
#include <gmock/gmock.h>

#include <numeric>

#include "tests/unit/agent_transport.h"

namespace {

using namespace agentTest;
using Agent::SimulatedBus;
using Agent::SimulatedSupply;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

/// Byte i of the image is i.
SimulatedSupply countingSupply(std::size_t length, std::string_view mfrId = "EMERSON") {
  std::vector<Kex::U8> image(length);
  std::iota(image.begin(), image.end(), Kex::U8{0});
  return {image, mfrId};
}

TEST(SimulatedSupply, Answers) {
  SimulatedSupply const supply = countingSupply(250);
  struct {
    char const* what;
    Smbus::Transaction transaction;
    char const* reply;
  } const rows[] = {
      {"beyond the image, then from its start", fruRead(248), "10F8F9FFFFFFFFFFFF0001020304050607"},
      {"command that it has not", {address(0x58, 0x9A), {}, 8}, ""},
      {"other device", {address(0x59, 0x99), {}, 8}, ""},
      {"MFR_ID by process call", {address(0x58, 0x99), fruRead(0).write, 8}, ""},
      {"FRU data without an offset", {address(0x58, 0xB0), {}, 17}, ""},
      {"FRU data with a wrong count", fruRead(0, 2), ""},
  };
  for (auto const& row : rows) {
    Smbus::Reply const reply = supply.answer(row.transaction);
    EXPECT_EQ(Agent::hex(reply.read.view()), row.reply) << row.what;
    EXPECT_EQ(reply.isOk, !reply.failure.view().starts_with("no ack")) << row.what;
  }
  EXPECT_EQ(countingSupply(1, std::string(32, 'A')).answer(mfrIdRead()).read.length, 33);
}

TEST(SimulatedBus, TakesTheTimeOfItsBytes) {
  SimulatedSupply const supply = countingSupply(256);
  struct {
    std::optional<SimulatedSupply> supply;
    Smbus::Transaction transaction;
    double bits;
  } const rows[] = {
      // address, command, address, count, 7 data bytes; start, repeated start, stop
      {supply, mfrIdRead(), 9 * 11 + 3},
      // address, command, count, offset, address, count, 16 data bytes
      {supply, fruRead(0), 9 * 22 + 3},
      {supply, {address(0x58, 0x42), {}, 8}, 9 * 2 + 2},
      {supply, {address(0x22, 0x99), {}, 8}, 9 + 2},
      {{}, mfrIdRead(), 9 + 2},
  };
  for (auto const& row : rows) {
    SimulatedBus bus(row.supply);
    Answers answers;
    bus.start(row.transaction, 1, answers);
    EXPECT_THAT(answers.texts, IsEmpty());
    pass(1);
    EXPECT_THAT(answers.seconds, ElementsAre(DoubleNear(row.bits * 10e-6, 1e-9)));
  }
}

TEST(SimulatedBus, SupplyComesAndGoesDuringATransaction) {
  SimulatedBus bus(countingSupply(256));
  Answers answers;
  bus.start(mfrIdRead(), 1, answers);
  pass(0.0005);
  bus.supplyIs({});
  pass(0);
  bus.start(mfrIdRead(), 2, answers);
  bus.supplyIs(countingSupply(256, "AB"));
  pass(1);
  bus.start(mfrIdRead(), 3, answers);
  pass(1);
  EXPECT_THAT(answers.texts, ElementsAre("1 no acknowledge", "2 no acknowledge", "3 024142"));
}

TEST(SimulatedBus, GoesAwayWithATransactionUnderWay) {
  Answers answers;
  {
    SimulatedBus bus(countingSupply(256));
    bus.start(mfrIdRead(), 1, answers);
  }
  pass(1);
  EXPECT_THAT(answers.texts, IsEmpty());
}

}  // namespace
