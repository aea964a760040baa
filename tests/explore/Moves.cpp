// The alphabet: what may happen to a slot at one moment.
#include "tests/explore/Moves.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace explore {

namespace {

using Smbus::ErrorKind;

bool isOnWire(Rig const& rig) { return rig.isOnWire(); }
bool isWaiting(Rig const& rig) { return std::isfinite(rig.wait()); }
bool isWaitingLong(Rig const& rig) {
  return rig.wait() > 0.9 * kPollInterval && rig.wait() < 1.1 * kPollInterval;
}
bool endsTheArea(Rig const& rig) { return rig.isAsked() && rig.endsTheArea(); }
bool always(Rig const&) { return true; }

/// Supply A answers with another count byte; the data behind it is there all the same.
Move counting(char const* what, unsigned (*count)(unsigned)) {
  return {std::string("A with count ") + what, isOnWire, [count](Rig& rig) {
            rig.answer(kA, [count](Smbus::Reply& reply) {
              reply.read.bytes[0] = static_cast<Kex::U8>(count(reply.read.bytes[0]));
            });
          }};
}

Move flipping(Flip const& flip) {
  return {std::string("A with a flipped bit in ") + flip.what,
          [flip](Rig const& rig) { return rig.isAsked() && rig.covers(flip); },
          [flip](Rig& rig) {
            unsigned const index =
                1 + flip.address.value_or(0) - (flip.address ? rig.askedOffset() : 0);
            rig.answer(kA, [&](Smbus::Reply& reply) { reply.read.bytes.at(index) ^= flip.mask; });
          }};
}

/// Supply A answers, and when that makes the descriptors be asked, one of them does this.
Move interfering(char const* what, std::function<void(Rig&)> const& interfere) {
  return {std::string("A, and a descriptor ") + what, endsTheArea, [interfere](Rig& rig) {
            rig.interfereInWalk(interfere);
            rig.answer(kA);
          }};
}

Move acting(busTest::Act const& act) {
  return {act.what, always, [act](Rig& rig) { rig.act(act); }};
}

void switchOffAndOn(Rig& rig) {
  rig.identifier().hasNotificationActiveIs(false);
  rig.identifier().hasNotificationActiveIs(true);
}

/// Supply A answers while a switch is off.
Move answeringWhileOff(busTest::Switch const& one) {
  return {std::string("A without ") + one.what, isOnWire, [one](Rig& rig) {
            rig.switchIs(one, false);
            rig.answer(kA);
            rig.switchIs(one, true);
          }};
}

/// Supply A answers; a descriptor that is asked switches off.
Move switchingOffInWalk(busTest::Switch const& one) {
  return {std::string("A, and a descriptor takes ") + one.what, endsTheArea, [one](Rig& rig) {
            rig.interfereInWalk([one](Rig& inside) { inside.switchIs(one, false); });
            rig.answer(kA);
            rig.switchIs(one, true);
          }};
}

/// The time of the wait goes by while a switch is off.
Move waitingWhileOff(busTest::Switch const& one) {
  return {std::string("the wait is over without ") + one.what, isWaiting, [one](Rig& rig) {
            double const wait = rig.wait();
            rig.switchIs(one, false);
            rig.pass(wait);
            rig.switchIs(one, true);
          }};
}

/// The moves of the small alphabet, by what they are.
constexpr auto kSmall =
    std::to_array<std::string_view>({"A",
                                     "B",
                                     "A with count 0",
                                     "no acknowledge",
                                     "timeout",
                                     "A with a flipped bit in MFR_ID",
                                     "A with a flipped bit in the header's version",
                                     "A with a flipped bit in the header's checksum",
                                     "A with a flipped bit in the area's checksum",
                                     "A, and a descriptor takes notifications",
                                     "the wait is over",
                                     "doResetIdentifier",
                                     "notifier off and on",
                                     "framework activity off and on",
                                     "living reactors off and on",
                                     "initialized off and on",
                                     "no deadline",
                                     "completions",
                                     "requests started",
                                     "requests loaded",
                                     "requests without a handler",
                                     "records gone",
                                     "A without derivedConstructed",
                                     "check request gone and back"});

}  // namespace

std::vector<Move> alphabet(bool small) {
  std::vector<Move> moves = {
      {"A", isOnWire, [](Rig& rig) { rig.answer(kA); }},
      {"B", isOnWire, [](Rig& rig) { rig.answer(kB); }},
      {"B without serial number", isOnWire, [](Rig& rig) { rig.answer(kBWithoutSerial); }},
      {"no acknowledge", isOnWire, [](Rig& rig) { rig.fail(ErrorKind::noAcknowledge); }},
      {"bad count", isOnWire, [](Rig& rig) { rig.fail(ErrorKind::badCount); }},
      {"timeout", isOnWire, [](Rig& rig) { rig.fail(ErrorKind::timeout, kTick); }},
      {"late", isOnWire, [](Rig& rig) { rig.answerLate(); }},
      counting("0", [](unsigned) { return 0U; }),
      counting("1", [](unsigned) { return 1U; }),
      counting("one less", [](unsigned count) { return count - 1; }),
      counting("33", [](unsigned) { return 33U; }),
      interfering("throws", [](Rig&) { throw std::logic_error("out of order"); }),
      interfering("switches notifications off and on", switchOffAndOn),
      {"the wait is over", isWaiting, [](Rig& rig) { rig.elapse(); }},
      {"half of the wait is over", isWaitingLong, [](Rig& rig) { rig.elapse(0.5); }},
      {"the wait is over, and the transport throws", isWaiting,
       [](Rig& rig) { rig.elapseIntoThrow(); }},
      {"replaced in vain", always, [](Rig& rig) { rig.replaceInVain(); }},
  };
  auto const switches = busTest::switches();
  std::ranges::transform(switches, std::back_inserter(moves), answeringWhileOff);
  std::ranges::transform(switches, std::back_inserter(moves), switchingOffInWalk);
  std::ranges::transform(switches, std::back_inserter(moves), waitingWhileOff);
  std::ranges::transform(kFlips, std::back_inserter(moves), flipping);
  std::ranges::transform(busTest::outsideActs(), std::back_inserter(moves), acting);
  if (small) {
    std::erase_if(moves, [](Move const& move) {
      return std::ranges::find(kSmall, move.what) == kSmall.end();
    });
    if (moves.size() != kSmall.size()) {
      throw std::logic_error("a move of the small alphabet is none of the moves");
    }
  }
  return moves;
}

}  // namespace explore
