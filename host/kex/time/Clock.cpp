// The clock and its deadlines.
#include "host/kex/time/Clock.h"

#include <algorithm>

namespace Kex {

namespace {

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

void Clock::deadlineIs(NotifieeConst& reactor, double time) const {
  std::size_t index = reactor.deadline_;
  if (index == NotifieeConst::kNoDeadline) {
    index = deadlines_.size();
    deadlines_.emplace_back();
  }
  placeIs(index, {time, nextOrder_++, &reactor});
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
    placeIs(index, last);
  }
}

void Clock::placeIs(std::size_t index, Deadline const& deadline) const {
  Deadline* const heap = deadlines_.data();
  std::size_t const size = deadlines_.size();
  auto const put = [heap](std::size_t at, Deadline const& moved) {
    heap[at] = moved;
    moved.reactor->deadline_ = at;
  };
  while (index != 0) {
    std::size_t const parent = (index - 1) / kChildren;
    if (!deadline.isBefore(heap[parent])) {
      break;
    }
    put(index, heap[parent]);
    index = parent;
  }
  for (std::size_t first = kChildren * index + 1; first < size; first = kChildren * index + 1) {
    Deadline const* const end = heap + std::min(first + kChildren, size);
    Deadline const* next = heap + first;
    for (Deadline const* child = next + 1; child != end; ++child) {
      next = child->isBefore(*next) ? child : next;
    }
    if (!next->isBefore(deadline)) {
      break;
    }
    put(index, *next);
    index = static_cast<std::size_t>(next - heap);
  }
  put(index, deadline);
}

Clock::NotifieeConst::~NotifieeConst() {
  if (Clock const* const clock = this->clock()) {
    clock->deadlineDel(*this);
  }
}

void Clock::NotifieeConst::timeMinIs(double time) {
  Clock const* const clock = this->clock();
  if (clock == nullptr || !isRegisteredNotifiee()) {
    return;
  }
  if (std::exchange(isReached_, false)) {
    pendingDel(kOnTime);
  }
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
