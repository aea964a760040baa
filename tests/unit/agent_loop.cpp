// The loop on both clocks: what ends it, and what reaches it from other threads and from signals.
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include "agent/slots/Loop.h"
#include "agent/transport/Timer.h"

namespace {

using Agent::ClockKind;
using Agent::Loop;
using Agent::Timer;

constexpr auto kNever = [] { return false; };

TEST(Loop, VirtualClockGoesFromDeadlineToDeadline) {
  Loop loop(ClockKind::virtualClock);
  double const begin = loop.now();
  int fired = 0;
  Timer ticker([&] { ++fired, ticker.startIn(1); });
  ticker.startIn(1);
  loop.run(begin + 3, kNever);
  EXPECT_EQ(fired, 3);
  loop.run(Loop::kForever, [&] { return fired == 5; });
  EXPECT_EQ(loop.now(), begin + 5);
  loop.run(begin + 5.5, kNever);
  EXPECT_EQ(loop.now(), begin + 5.5);
  ticker.stop();
  loop.run(Loop::kForever, kNever);
  EXPECT_EQ(fired, 5) << "ends when nothing is left to wait for";
}

class AnyLoop : public testing::TestWithParam<ClockKind> {};

TEST_P(AnyLoop, EndsOnASignal) {
  Loop loop(GetParam());
  Timer ticker([&] { ticker.startIn(1e-3); });
  ticker.startIn(0);
  std::raise(SIGTERM);
  loop.run(Loop::kForever, kNever);
  EXPECT_TRUE(loop.isStopped());
}

TEST_P(AnyLoop, RunsWhatAnotherThreadPosts) {
  Agent::Post post;
  {
    Loop loop(GetParam());
    post = loop.post();
    Timer ticker([&] { ticker.startIn(1e-3); });
    ticker.startIn(0);
    bool isPosted = false;
    std::jthread const worker([&] { post([&] { isPosted = true; }); });
    loop.run(Loop::kForever, [&] { return isPosted; });
    EXPECT_TRUE(isPosted);
  }
  post([] { FAIL() << "the loop has gone"; });
}

INSTANTIATE_TEST_SUITE_P(, AnyLoop,
                         testing::Values(ClockKind::virtualClock, ClockKind::steadyClock));

}  // namespace
