// Whether a slot's verdict changes too often for a line each time.
#include "agent/slots/Steadiness.h"

#include <algorithm>
#include <utility>

namespace Agent {

Steadiness::Steadiness(std::function<void(std::string const& text)> tell,
                       std::function<void()> onSteady)
    : tell_(std::move(tell)), onSteady_(std::move(onSteady)), timer_([this] { handleTime(); }) {}

void Steadiness::change() {
  forgetOld();
  changes_.push_back(Timer::now());
  if (isUnsteady_) {
    ++sinceSummary_;
  } else if (changes_.size() > kMost) {
    isUnsteady_ = true;
    tell_(
        std::to_string(changes_.size()) +
        " changes within 10 minutes; they are summed up once a minute until there is none for 10");
    schedule();
  }
}

void Steadiness::handleTime() {
  forgetOld();
  if (changes_.empty()) {
    isUnsteady_ = false;
    onSteady_();
    return;
  }
  if (unsigned const count = std::exchange(sinceSummary_, 0); count != 0) {
    tell_(std::to_string(count) + (count == 1 ? " change" : " changes") + " in the last minute");
  }
  schedule();
}

void Steadiness::forgetOld() {
  while (!changes_.empty() && changes_.front() + kWindow <= Timer::now()) {
    changes_.pop_front();
  }
}

void Steadiness::schedule() {
  timer_.startAt(std::min(Timer::now() + kSummary, changes_.back() + kWindow));
}

}  // namespace Agent
