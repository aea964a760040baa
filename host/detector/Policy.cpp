// What follows the end of a request: the policy of a slot, as pure functions.
#include "host/detector/Policy.h"

#include <algorithm>

namespace PowerSupplyDetector {

using Hardware::PowerSupplySlot::Verdict;

namespace {

/// Nobody is there, or nobody that can be talked to: detection starts over in due time, and what
/// was remembered of a supply does not count for the next one.
Move startOver(Told told, Situation const& situation) {
  Move move{.told = told,
            .next = Next::reset,
            .at = situation.now + situation.timings.pollInterval,
            .memory = {}};
  move.memory.lastReset = situation.memory.lastReset;
  return move;
}

/// A supply that was read too early heals by itself.
bool mayHeal(Verdict verdict) {
  return verdict == Verdict::invalidChecksum || verdict == Verdict::unsupportedVersion;
}

}  // namespace

void BackOff::schedule(double now) {
  due_ = now + interval_;
  interval_ = std::min(2 * interval_, kMost);
}

Move afterPoll(bool isPresent, Situation const& situation) {
  if (!isPresent) {
    return startOver(Told::ending, situation);
  }
  return {.told = Told::nothing,
          .next = Next::identify,
          .at = situation.now + situation.timings.pollDelay,
          .memory = situation.memory};
}

Move afterIdentify(std::optional<Verdict> verdict, Situation const& situation) {
  if (!verdict) {
    Move move = startOver(Told::ending, situation);
    move.memory.mismatches = situation.memory.mismatches;
    return move;
  }
  Move move{
      .told = Told::nothing, .next = Next::check, .at = situation.now, .memory = situation.memory};
  if (mayHeal(*verdict)) {
    move.memory.backOff.schedule(situation.now);
  } else {
    move.memory.backOff = {};
  }
  return move;
}

Move afterCheck(Checked checked, bool isFirst, Situation const& situation) {
  auto const& [now, timings, before] = situation;
  if (checked == Checked::gone) {
    return startOver(isFirst ? Told::ending : Told::nothing, situation);
  }
  Move move{.told = Told::nothing, .next = Next::check, .at = now, .memory = before};
  if (checked == Checked::same) {
    double const nextCheck = now + timings.pollInterval;
    double const repetition = before.backOff.due();
    move.told = isFirst ? Told::found : Told::nothing;
    move.next = repetition <= nextCheck ? Next::reset : Next::check;
    move.at = std::min(nextCheck, repetition);
    move.memory.mismatches = 0;
    return move;
  }
  move.next = Next::reset;
  move.at = std::max(now, before.lastReset + timings.pollInterval);
  move.memory.backOff = {};
  ++move.memory.mismatches;
  if (move.memory.mismatches >= 2 && isFirst) {
    move.told = Told::unstable;
  }
  return move;
}

}  // namespace PowerSupplyDetector
