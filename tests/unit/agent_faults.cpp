// The fault wrapper: what each fault does to a transaction, when faults apply, and random ones.
#include <gmock/gmock.h>

#include "agent/transport/FaultTransport.h"
#include "tests/unit/agent_transport.h"

namespace {

using namespace agentTest;
using Agent::Fault;
using Agent::FaultTransport;
using testing::Contains;
using testing::DoubleNear;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;

/// What a supply whose MFR_ID is "AB" answers to reads of it behind faults, one read every two
/// seconds, each long over when the next begins.
Answers answersBehind(std::vector<Fault> const& script, unsigned reads, Kex::U64 startValue = 0,
                      double rate = 0) {
  FaultTransport transport(std::make_unique<Agent::SimulatedBus>(
      Agent::SimulatedSupply(std::vector<Kex::U8>(256), "AB")));
  std::ranges::for_each(script, [&](Fault const& fault) { transport.faultQEnq(fault); });
  transport.randomIs(startValue, rate);
  Answers answers;
  for (Kex::U64 ticket = 1; ticket <= reads; ++ticket) {
    transport.start(mfrIdRead(), ticket, answers);
    pass(2);
  }
  return answers;
}

TEST(FaultTransport, EachKind) {
  constexpr double kWire = 63 * 10e-6;  // address, command, address, count, two bytes; 3 more bits
  struct {
    Fault fault;
    char const* answer;
    double seconds;
  } const rows[] = {
      {{.kind = Fault::Kind::nack}, "1 no acknowledge", 0},
      {{.kind = Fault::Kind::hang}, "1 timeout", 1},
      {{.kind = Fault::Kind::count, .value = 1}, "1 014100", kWire},
      {{.kind = Fault::Kind::count, .value = 255}, "1 FF4142", kWire},
      {{.kind = Fault::Kind::flip, .byte = 2, .value = 255}, "1 0241BD", kWire},
      {{.kind = Fault::Kind::flip, .byte = 3, .value = 255}, "1 024142", kWire},
      {{.kind = Fault::Kind::late}, "1 timeout", 1},
  };
  for (auto const& row : rows) {
    Answers const answers = answersBehind({row.fault}, 1);
    EXPECT_THAT(answers.texts, ElementsAre(row.answer));
    EXPECT_THAT(answers.seconds, ElementsAre(DoubleNear(row.seconds, 1e-4))) << row.answer;
  }
}

TEST(FaultTransport, ApplyInOrderFromTheirTimesOn) {
  double const begin = Agent::Timer::now();
  std::vector<Fault> const script{
      {.kind = Fault::Kind::nack, .at = begin + 1, .transactions = 2},
      {.kind = Fault::Kind::hang, .at = begin + 3, .transactions = 1},
      {.kind = Fault::Kind::nack, .at = begin + 9.5, .transactions = Fault::kForever}};
  EXPECT_THAT(answersBehind(script, 7).texts,
              ElementsAre("1 024142", "2 no acknowledge", "3 no acknowledge", "4 timeout",
                          "5 024142", "6 no acknowledge", "7 no acknowledge"));
}

TEST(FaultTransport, LateAnswerComesDuringTheNextTransaction) {
  EXPECT_THAT(answersBehind({{.kind = Fault::Kind::late}}, 2).texts,
              ElementsAre("1 timeout", "1 024142", "2 024142"));
}

TEST(FaultTransport, RandomFaultsFollowFromTheStartValue) {
  auto const answersOf = [](Kex::U64 startValue, double rate) {
    return answersBehind({}, 40, startValue, rate).texts;
  };
  EXPECT_EQ(answersOf(1, 0.5), answersOf(1, 0.5));
  EXPECT_NE(answersOf(1, 0.5), answersOf(2, 0.5));
  EXPECT_THAT(answersOf(1, 0), Each(EndsWith("024142")));
  // Every kind is among them, so some answers come besides the failures that they are late for.
  auto const texts = answersOf(1, 1);
  EXPECT_GT(texts.size(), 40U);
  EXPECT_THAT(texts, Contains(EndsWith("no acknowledge")));
}

}  // namespace
