// A piece of work that waits for its turn on the run loop.
#pragma once

#include "host/kex/base/Export.h"

namespace Kex {

/// A link of a ring that costs no allocation.
struct KEX_API RingLink {
  RingLink() = default;
  RingLink(RingLink const&) = delete;
  RingLink& operator=(RingLink const&) = delete;
  ~RingLink() { unlink(); }

  bool isLinked() const { return next != nullptr; }
  /// Joins the ring of `other`, just before it.
  void linkBefore(RingLink& other) {
    next = &other;
    previous = other.previous;
    previous->next = this;
    other.previous = this;
  }
  /// Leaves the ring, if it is in one.
  void unlink() {
    if (isLinked()) {
      previous->next = next;
      next->previous = previous;
      next = previous = nullptr;
    }
  }

  RingLink* next = nullptr;
  RingLink* previous = nullptr;
};

/// Something that the run loop runs once for each time it was queued. It is queued at most once at
/// a time, and leaves the queue when it is destroyed or switched off.
class KEX_API Activity : private RingLink {
 public:
  Activity(Activity const&) = delete;
  Activity& operator=(Activity const&) = delete;

  /// Whether the activity may run at all. Switching it off takes it out of the queue.
  bool hasNotificationActive() const { return isActive_; }
  virtual void hasNotificationActiveIs(bool active);

  /// Takes the activity that was queued first out of the queue and runs it; false when none is
  /// queued.
  static bool runFirst();

 protected:
  Activity() = default;
  ~Activity() = default;

  bool isQueued() const { return isLinked(); }
  /// Puts the activity at the end of the queue, unless it is there already or switched off.
  void enqueue();
  /// Takes the activity out of the queue, if it is there.
  void dequeue() { unlink(); }
  /// The work. The object may be destroyed by it, so nothing of it is touched afterwards.
  virtual void run() = 0;

 private:
  bool isActive_ = true;
};

}  // namespace Kex
