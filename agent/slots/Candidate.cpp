// A source in a slot of its own, watched until it is known what is there.
#include "agent/slots/Candidate.h"

#include <algorithm>
#include <utility>

#include "agent/base/Error.h"
#include "agent/transport/Timer.h"

namespace Agent {

Candidate::Candidate(Source const& source, SourceContext context, std::string const& slotName,
                     Plugin const& plugin, double waitUntil)
    : source_(source.text()),
      waitUntil_(waitUntil),
      slot_(slotName, source.open(onEnd(std::move(context))), plugin) {
  slot_.observerIs(&log_);
  slot_.onSupplyIs([this](Supply const& supply) { handleSupply(supply); });
}

SourceContext Candidate::onEnd(SourceContext context) {
  context.onEnd = [this](std::string const& why) {
    hasSourceEnded_ = true;
    slot_.stop();
    complain(why);
  };
  return context;
}

void Candidate::handleSupply(Supply const& supply) {
  outcome_ = supply;
  isDone_ = supply.verdict == Verdict::identified || Timer::now() >= waitUntil_;
  if (isDone_) {
    slot_.stop();
  }
}

void detect(Candidates const& candidates, Loop& loop, double waitUntil) {
  loop.run(waitUntil, [&] {
    return std::ranges::all_of(candidates, [](auto const& one) { return one->isDone(); });
  });
  loop.run(Loop::kForever, [&] {
    return std::ranges::all_of(
        candidates, [](auto const& one) { return one->outcome() || one->hasSourceEnded(); });
  });
}

}  // namespace Agent
