// Counts what the slots of a run do.
#include "agent/report/Meter.h"

#include <algorithm>
#include <utility>

#include "host/kex/time/ActivityManager.h"

namespace Agent {

namespace {

double now() { return Kex::activityManager().config().clock()->time(); }

Kex::String8 serialNumberOf(Supply const& supply) {
  return supply.product ? supply.product->serialNumber() : Kex::String8();
}

/// Whether the same is told of both.
bool isSame(Supply const& one, Supply const& other) {
  return one.verdict == other.verdict && serialNumberOf(one) == serialNumberOf(other) &&
         one.fdl == other.fdl;
}

}  // namespace

void Meter::slotsAre(std::set<std::string> const& names) {
  std::erase_if(slots_, [&](auto const& slot) { return !names.contains(slot.first); });
  for (std::string const& name : names) {
    slots_.try_emplace(name, Counted{.figures = {.slot = name}});
  }
}

void Meter::transactionIs(std::string const& slot, Smbus::Reply const& reply) {
  Counted& counted = slots_.at(slot);
  ++counted.figures.transactions;
  if (!reply.isOk) {
    ++counted.figures.failures[static_cast<std::size_t>(reply.error)];
    counted.isEmpty = counted.isEmpty || Smbus::rowOf(reply.error).provesAbsence;
  } else if (std::exchange(counted.isEmpty, false)) {
    counted.insertion = now();
  }
}

void Meter::supplyIs(std::string const& slot, Supply const& supply) {
  Counted& counted = slots_.at(slot);
  SlotMetrics& figures = counted.figures;
  bool const isChange = !figures.supply || !isSame(*figures.supply, supply);
  bool const isIdentified = supply.verdict == Verdict::identified;
  ++figures.detections;
  if (isIdentified && !isChange) {
    ++figures.reviews;
  }
  if (isIdentified) {
    if (counted.identified && !isSame(*counted.identified, supply)) {
      ++figures.swaps;
    }
    counted.identified = supply;
    if (auto const insertion = std::exchange(counted.insertion, std::nullopt);
        insertion && isChange) {
      figures.recognition.add(now() - *insertion);
    }
  }
  figures.supply = supply;
  if (isChange) {
    figures.lastChange = now();
    if (onChange_) {
      onChange_();
    }
  }
}

Metrics Meter::metrics() const {
  Metrics metrics{.time = now()};
  for (auto const& [name, counted] : slots_) {
    metrics.slots.push_back(counted.figures);
  }
  return metrics;
}

}  // namespace Agent
