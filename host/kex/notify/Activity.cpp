// A piece of work that waits for its turn on the run loop.
#include "host/kex/notify/Activity.h"

namespace Kex {

namespace {

/// The ring of what is pending, through its anchor.
RingLink& queue() {
  // Never destroyed: reactors that outlive main() still leave it.
  static RingLink& anchor = []() -> RingLink& {
    auto& made = *new RingLink;
    made.next = made.previous = &made;
    return made;
  }();
  return anchor;
}

}  // namespace

void RingLink::linkBefore(RingLink& other) {
  next = &other;
  previous = other.previous;
  previous->next = this;
  other.previous = this;
}

void RingLink::unlink() {
  if (isLinked()) {
    previous->next = next;
    next->previous = previous;
    next = previous = nullptr;
  }
}

void Activity::hasNotificationActiveIs(bool active) {
  isActive_ = active;
  if (!active) {
    dequeue();
  }
}

bool Activity::runFirst() {
  RingLink const& anchor = queue();
  if (anchor.next == &anchor) {
    return false;
  }
  auto& first = static_cast<Activity&>(*anchor.next);
  first.dequeue();
  first.run();
  return true;
}

void Activity::enqueue() {
  if (!isQueued() && isActive_) {
    linkBefore(queue());
  }
}

}  // namespace Kex
