// The clock and its deadlines.
#include "host/kex/time/Clock.h"

#include <limits>

namespace Kex {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr unsigned kOnTime = PtrInterface::kReactionsEnd;

}  // namespace

KexType& Clock::fwkType() const { return _fwkType(); }

Clock::~Clock() = default;

void Clock::timeIs(double time) {
  if (time > time_) {
    time_ = time;
  }
  while (!deadlines_.empty() && nextDeadline() <= time_) {
    NotifieeConst& reactor = *deadlines_.front().reactor;
    deadlineDel(reactor);
    reactor.isReached_ = true;
    reactor.pendingIs(kOnTime);
  }
}

double Clock::nextDeadline() const { return deadlines_.empty() ? kNever : deadlines_.front().time; }

void Clock::deadlineIs(NotifieeConst& reactor, double time) const {
  Deadline const deadline{time, nextOrder_++, &reactor};
  std::size_t index = reactor.deadline_;
  if (index == NotifieeConst::kNoDeadline) {
    index = deadlines_.size();
    deadlines_.push_back(deadline);
  }
  heapIs(index, deadline);
  siftUp(index);
  siftDown(reactor.deadline_);
}

void Clock::deadlineDel(NotifieeConst& reactor) const {
  std::size_t const index = reactor.deadline_;
  if (index == NotifieeConst::kNoDeadline) {
    return;
  }
  reactor.deadline_ = NotifieeConst::kNoDeadline;
  Deadline const last = deadlines_.back();
  deadlines_.pop_back();
  if (index < deadlines_.size()) {
    heapIs(index, last);
    siftUp(index);
    siftDown(last.reactor->deadline_);
  }
}

void Clock::heapIs(std::size_t index, Deadline const& deadline) const {
  deadlines_[index] = deadline;
  deadline.reactor->deadline_ = index;
}

void Clock::siftUp(std::size_t index) const {
  Deadline const moving = deadlines_[index];
  while (index > 0 && moving.isBefore(deadlines_[(index - 1) / 2])) {
    heapIs(index, deadlines_[(index - 1) / 2]);
    index = (index - 1) / 2;
  }
  heapIs(index, moving);
}

void Clock::siftDown(std::size_t index) const {
  Deadline const moving = deadlines_[index];
  for (;;) {
    std::size_t child = 2 * index + 1;
    if (child + 1 < deadlines_.size() && deadlines_[child + 1].isBefore(deadlines_[child])) {
      ++child;
    }
    if (child >= deadlines_.size() || !deadlines_[child].isBefore(moving)) {
      break;
    }
    heapIs(index, deadlines_[child]);
    index = child;
  }
  heapIs(index, moving);
}

Clock::NotifieeConst::~NotifieeConst() {
  if (Clock const* const clock = notifier().ptr()) {
    clock->deadlineDel(*this);
  }
}

double Clock::NotifieeConst::timeMin() const {
  return deadline_ == kNoDeadline ? kNever : notifier()->deadlines_[deadline_].time;
}

void Clock::NotifieeConst::timeMinIs(double time) {
  Ptr<Clock const> const clock = notifier();
  if (!clock || !isRegisteredNotifiee()) {
    return;
  }
  isReached_ = false;
  pendingDel(kOnTime);
  if (time < kNever) {
    clock->deadlineIs(*this, time);
  } else {
    clock->deadlineDel(*this);
  }
}

void Clock::NotifieeConst::hasNotificationActiveIs(bool active) {
  Entity::NotifieeConst::hasNotificationActiveIs(active);
  if (active && isReached_) {
    pendingIs(kOnTime);
  }
}

void Clock::NotifieeConst::react(unsigned reaction) {
  if (reaction == kOnTime) {
    isReached_ = false;
    onTime();
  } else {
    Entity::NotifieeConst::react(reaction);
  }
}

void Clock::NotifieeConst::handleAttached(bool attached) {
  if (!attached) {
    isReached_ = false;
    notifier()->deadlineDel(*this);
  }
}

}  // namespace Kex
