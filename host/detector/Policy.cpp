// What follows the end of a request: the policy of a slot, as pure functions.
#include "host/detector/Policy.h"

#include <algorithm>

namespace PowerSupplyDetector {

namespace {

/// Remembers what a detection came to, and says whether it is told: the first outcome is, an
/// identified supply always is, and so is what does not change anything; anything else takes two
/// detections in a row, so that one spoilt transaction never takes a description away.
bool isConfirmed(Outcome const& outcome, Memory& memory) {
  bool const isTold = !memory.told || outcome.verdict == Verdict::identified ||
                      outcome == memory.told || outcome == memory.unconfirmed;
  if (isTold) {
    memory.told = outcome;
    memory.unconfirmed.reset();
  } else {
    memory.unconfirmed = outcome;
  }
  return isTold;
}

/// Detection starts over after a poll interval; of the supply nothing is remembered.
Move afterFailedDetection(Outcome const& outcome, Situation const& situation) {
  Move move{.told = Told::nothing,
            .next = Next::reset,
            .at = situation.now + situation.timings.pollInterval,
            .memory = situation.memory};
  move.memory.backOff = {};
  move.told = isConfirmed(outcome, move.memory) ? Told::ending : Told::nothing;
  return move;
}

/// A supply that was read too early heals by itself.
bool mayHeal(Verdict verdict) {
  return verdict == Verdict::invalidChecksum || verdict == Verdict::unsupportedVersion;
}

/// When the whole detection runs again while the supply is checked.
double reviewTime(CheckEnding const& ending, Situation const& situation, Memory const& memory) {
  if (mayHeal(ending.found.verdict)) {
    return memory.backOff.due();
  }
  double const interval = situation.timings.reviewInterval;
  return memory.firstCheck.value_or(situation.now) +
         (ending.hasSerialNumber ? interval
                                 : std::min(interval, Timings::kMostWithoutSerialNumber));
}

}  // namespace

void BackOff::schedule(double now, Timings const& timings) {
  interval_ = std::min(std::max(2 * interval_, timings.leastRepetition), timings.mostRepetition);
  due_ = now + interval_;
}

double earliestReset(Situation const& situation) {
  return std::max(situation.now, situation.memory.lastReset + situation.timings.pollInterval);
}

Move afterPoll(PollEnding const& ending, Situation const& situation) {
  if (ending.outcome) {
    Move move = afterFailedDetection(*ending.outcome, situation);
    move.memory.mismatches = 0;
    return move;
  }
  return {.told = Told::nothing,
          .next = Next::identify,
          .at = situation.now + situation.timings.pollDelay,
          .memory = situation.memory};
}

Move afterIdentify(IdentifyEnding const& ending, Situation const& situation) {
  if (!ending.isComplete) {
    return afterFailedDetection(ending.outcome, situation);
  }
  Move move{
      .told = Told::nothing, .next = Next::check, .at = situation.now, .memory = situation.memory};
  if (mayHeal(ending.outcome.verdict)) {
    move.memory.backOff.schedule(situation.now, situation.timings);
  } else {
    move.memory.backOff = {};
  }
  return move;
}

Move afterCheck(CheckEnding const& ending, Situation const& situation) {
  Move move{.told = Told::nothing,
            .next = Next::reset,
            .at = earliestReset(situation),
            .memory = situation.memory};
  Memory& memory = move.memory;
  constexpr Outcome kUnreadable{.verdict = Verdict::unreadable};
  switch (ending.checked) {
    case Checked::gone:
      memory.backOff = {};
      memory.mismatches = 0;
      if (ending.isFirst && isConfirmed(kUnreadable, memory)) {
        move.told = Told::ending;
      }
      return move;
    case Checked::otherSerialNumber:
    case Checked::otherAreaHeader:
      memory.backOff = {};
      memory.mismatches = static_cast<Kex::U8>(std::min(memory.mismatches + 1, 2));
      if (ending.isFirst && memory.mismatches >= 2) {
        move.told = isConfirmed(kUnreadable, memory) ? Told::unstable : Told::nothing;
      }
      return move;
    case Checked::same: break;
  }
  memory.mismatches = 0;
  if (ending.isFirst) {
    memory.firstCheck = situation.now;
    if (!isConfirmed(ending.found, memory)) {
      move.at = situation.now + situation.timings.pollInterval;
      return move;
    }
    move.told = Told::found;
  }
  if (ending.hadFailures) {
    // A supply that did not answer for a while may have been swapped for one that answers alike.
    return move;
  }
  double const nextCheck = situation.now + situation.timings.pollInterval;
  double const review = std::max(move.at, reviewTime(ending, situation, memory));
  move.next = review <= nextCheck ? Next::reset : Next::check;
  move.at = std::min(nextCheck, review);
  return move;
}

Move after(Ending const& ending, Situation const& situation) {
  struct Decide {
    Situation const& situation;
    Move operator()(std::monostate) const {
      return {.told = Told::nothing,
              .next = Next::reset,
              .at = earliestReset(situation),
              .memory = situation.memory};
    }
    Move operator()(PollEnding const& ending) const { return afterPoll(ending, situation); }
    Move operator()(IdentifyEnding const& ending) const { return afterIdentify(ending, situation); }
    Move operator()(CheckEnding const& ending) const { return afterCheck(ending, situation); }
  };
  return std::visit(Decide{situation}, ending);
}

}  // namespace PowerSupplyDetector
