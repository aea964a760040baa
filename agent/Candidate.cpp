// A source in a slot of its own, watched until it is known what is there.
#include "agent/Candidate.h"

#include <algorithm>
#include <utility>

#include "agent/transport/Timer.h"

namespace Agent {

Candidate::Candidate(std::string source, std::string const& slotName,
                     std::unique_ptr<Smbus::Transport> transport, Plugin const& plugin,
                     double waitUntil)
    : source_(std::move(source)),
      waitUntil_(waitUntil),
      slot_(slotName, std::move(transport), plugin) {
  slot_.observerIs(&log_);
  slot_.onSupplyIs([this](Supply const& supply) { handleSupply(supply); });
}

void Candidate::handleSupply(Supply const& supply) {
  outcome_ = supply;
  isDone_ = supply.verdict == Hardware::PowerSupplySlot::Verdict::identified ||
            Timer::now() >= waitUntil_;
  if (isDone_) {
    slot_.stop();
  }
}

void detect(Candidates const& candidates, Loop& loop, double waitUntil) {
  loop.run(waitUntil, [&] {
    return std::ranges::all_of(candidates, [](auto const& one) { return one->isDone(); });
  });
  loop.run(Loop::kForever, [&] {
    return std::ranges::all_of(candidates,
                               [](auto const& one) { return one->outcome().has_value(); });
  });
}

}  // namespace Agent
