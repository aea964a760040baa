// A piece of work that waits for its turn on the run loop.
#include "host/kex/notify/Activity.h"

namespace Kex {

namespace {

/// The anchor of a ring.
struct Anchor : RingLink {
  constexpr Anchor() { next = previous = this; }
};

/// The ring of what is pending. Never destroyed: reactors that outlive main() still leave it.
constinit union Queue {
  Anchor anchor;
  constexpr Queue() : anchor() {}
  ~Queue() {}
} queue;

}  // namespace

void Activity::hasNotificationActiveIs(bool active) {
  isActive_ = active;
  if (!active) {
    dequeue();
  }
}

bool Activity::runFirst() {
  RingLink* const link = queue.anchor.next;
  if (link == &queue.anchor) {
    return false;
  }
  auto& first = static_cast<Activity&>(*link);
  first.dequeue();
  first.run();
  return true;
}

void Activity::enqueue() {
  if (!isQueued() && isActive_) {
    linkBefore(queue.anchor);
  }
}

}  // namespace Kex
