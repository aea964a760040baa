// The fault wrapper: what each fault does to a transaction, when faults apply, and random ones.
#include <gmock/gmock.h>

#include "agent/transport/FaultTransport.h"
#include "tests/unit/agent_transport.h"

namespace {

using namespace agentTest;
using Agent::Fault;
using Agent::FaultTransport;
using testing::DoubleNear;
using testing::ElementsAre;

constexpr char const* kGood = "024142";

/// A supply whose MFR_ID is "AB", behind a script of faults.
std::unique_ptr<FaultTransport> supplyWithFaults(std::vector<Fault> const& script) {
  std::vector<Kex::U8> const image(256);
  auto transport = std::make_unique<FaultTransport>(
      std::make_unique<Agent::SimulatedBus>(Agent::SimulatedSupply(image, "AB")));
  for (Fault const& fault : script) {
    transport->faultQEnq(fault);
  }
  return transport;
}

/// Runs `transactions` MFR_ID reads, one every two seconds, each long over when the next begins.
Answers run(FaultTransport& transport, unsigned transactions) {
  Answers answers;
  for (Kex::U64 ticket = 1; ticket <= transactions; ++ticket) {
    transport.start(mfrIdRead(), ticket, answers);
    pass(2);
  }
  return answers;
}

TEST(FaultTransport, EachKind) {
  constexpr double kWire = 63 * 10e-6;  // address, command, address, count, two bytes; 3 more bits
  struct Row {
    char const* what;
    Fault fault;
    char const* answer;
    double seconds;
  };
  Row const rows[] = {
      {"nack", {.kind = Fault::Kind::nack}, "1 no acknowledge", 0},
      {"hang", {.kind = Fault::Kind::hang}, "1 timeout", 1},
      {"smaller count", {.kind = Fault::Kind::count, .value = 1}, "1 014100", kWire},
      {"count 0", {.kind = Fault::Kind::count, .value = 0}, "1 000000", kWire},
      {"larger count", {.kind = Fault::Kind::count, .value = 255}, "1 FF4142", kWire},
      {"flip of the count", {.kind = Fault::Kind::flip, .byte = 0, .value = 1}, "1 034142", kWire},
      {"flip of data", {.kind = Fault::Kind::flip, .byte = 2, .value = 255}, "1 0241BD", kWire},
      {"flip beyond", {.kind = Fault::Kind::flip, .byte = 3, .value = 255}, "1 024142", kWire},
      {"late", {.kind = Fault::Kind::late}, "1 timeout", 1},
  };
  for (Row const& row : rows) {
    auto const transport = supplyWithFaults({row.fault});
    Answers const answers = run(*transport, 1);
    EXPECT_THAT(answers.texts, ElementsAre(row.answer)) << row.what;
    EXPECT_THAT(answers.seconds, ElementsAre(DoubleNear(row.seconds, 1e-4))) << row.what;
  }
}

TEST(FaultTransport, ApplyInOrderFromTheirTimesOn) {
  double const begin = Agent::Timer::now();
  auto const transport = supplyWithFaults({
      {.kind = Fault::Kind::nack, .at = begin + 1, .transactions = 2},
      {.kind = Fault::Kind::hang, .at = begin + 3, .transactions = 1},
      {.kind = Fault::Kind::nack, .at = begin + 9.5, .transactions = Fault::kForever},
  });
  EXPECT_THAT(run(*transport, 7).texts,
              ElementsAre("1 024142", "2 no acknowledge", "3 no acknowledge", "4 timeout",
                          "5 024142", "6 no acknowledge", "7 no acknowledge"));
}

TEST(FaultTransport, LateAnswerComesDuringTheNextTransaction) {
  auto const transport = supplyWithFaults({{.kind = Fault::Kind::late}});
  EXPECT_THAT(run(*transport, 2).texts, ElementsAre("1 timeout", "1 024142", "2 024142"));
}

TEST(FaultTransport, RandomFaultsFollowFromTheStartValue) {
  auto const answersOf = [](Kex::U64 startValue, double rate) {
    auto const transport = supplyWithFaults({});
    transport->randomIs(startValue, rate);
    return run(*transport, 40).texts;
  };
  EXPECT_EQ(answersOf(1, 0.5), answersOf(1, 0.5));
  EXPECT_NE(answersOf(1, 0.5), answersOf(2, 0.5));
  for (std::string const& answer : answersOf(1, 0)) {
    EXPECT_THAT(answer, testing::EndsWith(kGood));
  }
}

}  // namespace
