// A source in a slot of its own, watched until it is known what is there.
#include "agent/slots/Candidate.h"

#include <algorithm>
#include <utility>

#include "agent/base/Error.h"
#include "agent/base/Terminal.h"
#include "agent/transport/SimulatedSupply.h"
#include "agent/transport/Timer.h"

namespace Agent {

Candidate::Candidate(Source const& source, SourceContext context, std::string const& slotName,
                     Plugin const& plugin, double waitUntil)
    : source_(source.text()),
      waitUntil_(waitUntil),
      slot_(slotName, source.open(listening(std::move(context))), plugin) {
  listen();
}

Candidate::Candidate(std::string source, std::unique_ptr<Smbus::Transport> transport,
                     std::string const& slotName, Plugin const& plugin, Hint hint)
    : source_(std::move(source)),
      waitUntil_(0),
      hint_(std::move(hint)),
      slot_(slotName, std::move(transport), plugin) {
  listen();
}

void Candidate::listen() {
  slot_.observerIs(&log_);
  slot_.onSupplyIs([this](Supply const& supply) { handleSupply(supply); });
}

SourceContext Candidate::listening(SourceContext context) {
  context.onImage = [this](std::span<Kex::U8 const> image) {
    image_.assign(image.begin(), image.end());
  };
  context.onEnd = [this](std::string const& why) {
    hasSourceEnded_ = true;
    slot_.stop();
    complain(why);
  };
  return context;
}

FruBytes Candidate::memory() const {
  FruBytes bytes;
  for (TransactionRecord const& record : log_.records()) {
    bytes.recordIs(record);
  }
  bytes.imageIs(image_);
  return bytes;
}

std::optional<Hint> Candidate::hint() const {
  if (hint_) {
    return hint_;
  }
  bool const isShort = !image_.empty() && image_.size() < SimulatedSupply::kLongestImage;
  return outcome_
             ? hintOf(*outcome_, memory(), isShort ? std::optional(image_.size()) : std::nullopt)
             : std::nullopt;
}

void Candidate::handleSupply(Supply const& supply) {
  outcome_ = supply;
  isDone_ = supply.verdict == Verdict::identified || Timer::now() >= waitUntil_;
  if (isDone_) {
    slot_.stop();
  }
}

void detect(Candidates const& candidates, Loop& loop, double waitUntil) {
  auto const areAll = [&](auto const& isEnded) {
    auto const ended = std::ranges::count_if(candidates, isEnded);
    progress([&] {
      return std::to_string(ended) + " of " + std::to_string(candidates.size()) +
             " sources are done, " + std::to_string(static_cast<long>(loop.now())) + " s";
    });
    return static_cast<std::size_t>(ended) == candidates.size();
  };
  loop.run(waitUntil, [&] { return areAll([](auto const& one) { return one->isDone(); }); });
  loop.run(Loop::kForever, [&] {
    return areAll([](auto const& one) { return one->outcome() || one->hasSourceEnded(); });
  });
  eraseProgress();
}

std::unique_ptr<Candidate> detected(Source const& source, std::string const& mfrId,
                                    Plugin const& plugin, Loop& loop) {
  Candidates one;
  one.push_back(std::make_unique<Candidate>(
      source, SourceContext{.mfrId = mfrId, .post = loop.post()}, "PowerSupply1", plugin, 0));
  detect(one, loop, 0);
  return std::move(one.front());
}

}  // namespace Agent
