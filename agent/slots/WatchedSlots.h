// The slots that are watched, which may change while they are.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "agent/slots/Loop.h"
#include "agent/slots/Source.h"
#include "agent/slots/WatchedSlot.h"

namespace Agent {

/// A slot that is to be watched, and how.
struct SlotPlan {
  std::string name;
  Source source;
  /// See `Slot`, in seconds.
  double pollInterval = 1;
  double reviewInterval = 60;
};

/// Slots at work, each from when it is planned until it is no more.
class WatchedSlots {
 public:
  /// All that is given must outlive the slots.
  WatchedSlots(Plugin const& plugin, Loop const& loop, Reporting& reporting);

  /// The slots from now on, by names of their own. One that stays, with the same source, is not
  /// touched but for its intervals; others stop, and the new ones start. One that cannot be opened
  /// is told of and left out.
  void plansAre(std::vector<SlotPlan> const& plans);
  /// Begins detection anew where a supply is unrecognised; what is told stays until that has ended.
  void detectUnrecognised();
  bool isEmpty() const { return slots_.empty(); }
  /// Whether there is a verdict for every slot.
  bool isComplete() const;
  /// For a person, how many slots are in which verdict: "3 slots: 2 identified, 1 absent".
  std::string text() const;

 private:
  void start(SlotPlan const& plan);

  Plugin const& plugin_;
  Loop const& loop_;
  Reporting& reporting_;
  std::map<std::string, std::unique_ptr<WatchedSlot>> slots_;
};

}  // namespace Agent
