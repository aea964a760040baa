// The slots that are watched, which may change while they are.
#include "agent/slots/WatchedSlots.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <ranges>
#include <set>
#include <utility>

namespace Agent {

namespace {

/// Publishes and counts of the slots of these names only.
template <class Names>
void tellOf(Reporting const& reporting, Names const& names) {
  if (reporting.publisher != nullptr) {
    reporting.publisher->slotsAre({names.begin(), names.end()});
  }
  if (reporting.meter != nullptr) {
    reporting.meter->slotsAre({names.begin(), names.end()});
  }
}

}  // namespace

WatchedSlots::WatchedSlots(Plugin const& plugin, Loop const& loop, Reporting& reporting)
    : plugin_(plugin), loop_(loop), reporting_(reporting) {}

void WatchedSlots::plansAre(std::vector<SlotPlan> const& plans) {
  auto const isGone = [&](auto const& entry) {
    return std::ranges::none_of(plans, [&](SlotPlan const& plan) {
      return plan.name == entry.first && plan.source.text() == entry.second->source();
    });
  };
  if (std::erase_if(slots_, isGone) != 0) {
    // What is told of a slot that has the name of one that is gone begins anew.
    tellOf(reporting_, std::views::keys(slots_));
  }
  tellOf(reporting_, std::views::transform(plans, &SlotPlan::name));
  for (SlotPlan const& plan : plans) {
    reporting_.ledger.attempt([&] { start(plan); });
  }
}

void WatchedSlots::start(SlotPlan const& plan) {
  if (!slots_.contains(plan.name)) {
    auto const open = [&](OnEnd onEnd) {
      return plan.source.open(
          {.post = loop_.post(), .onEnd = std::move(onEnd), .mayBeMissing = true});
    };
    slots_.emplace(plan.name, std::make_unique<WatchedSlot>(plan.name, plan.source.text(), open,
                                                            plugin_, reporting_));
  }
  Slot& slot = slots_.at(plan.name)->slot();
  slot.pollIntervalIs(plan.pollInterval);
  slot.reviewIntervalIs(plan.reviewInterval);
}

void WatchedSlots::detectUnrecognised() {
  for (auto const& [name, slot] : slots_) {
    if (slot->verdict() == Verdict::unrecognised) {
      slot->slot().detectAgain();
    }
  }
}

bool WatchedSlots::isComplete() const {
  return std::ranges::all_of(slots_,
                             [](auto const& entry) { return entry.second->verdict().has_value(); });
}

std::string WatchedSlots::text() const {
  // By how far the supplies got on their road, and what is not known yet last.
  std::map<std::optional<Verdict>, unsigned, std::greater<>> counts;
  for (auto const& [name, slot] : slots_) {
    ++counts[slot->verdict()];
  }
  std::string text = std::to_string(slots_.size()) + (slots_.size() == 1 ? " slot" : " slots");
  for (char const* separator = ": "; auto const& [verdict, count] : counts) {
    text += separator + std::to_string(count) + ' ' +
            (verdict ? verdictName(*verdict) : "not known yet");
    separator = ", ";
  }
  return text;
}

}  // namespace Agent
