// A piece of work that waits for its turn on the run loop.
#include "host/kex/notify/Activity.h"

#include "host/kex/time/ActivityManager.h"

namespace Kex {

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

void Activity::runFirst(RingLink& queue) {
  auto& first = static_cast<Activity&>(*queue.next);
  first.dequeue();
  first.run();
}

void Activity::enqueue() {
  if (!isQueued() && isActive_) {
    linkBefore(activityManager().queue());
  }
}

}  // namespace Kex
