// The clock and its deadlines.
#pragma once

#include <limits>
#include <vector>

#include "host/kex/entity/Entity.h"

namespace Kex {

/// A time that somebody steps: the steady clock's in live use, a virtual one in simulation.
class KEX_API Clock : public Entity {
 public:
  class NotifieeConst;
  class Notifiee;

  static KexType& _fwkType();

  explicit Clock(Name name) : Entity(std::move(name)) {}
  KexType& fwkType() const override;
  ~Clock() override;

  /// The current time in seconds. It never runs backwards.
  double time() const { return time_; }
  /// Steps to `time` (seconds) and queues `onTime()` of every reactor whose deadline is reached,
  /// the earliest first, of two equal ones the one that was set first. An earlier time is ignored.
  void timeIs(double time);
  /// The earliest deadline in seconds; infinity when there is none.
  double nextDeadline() const { return deadlines_.empty() ? kNever : deadlines_.front().time; }

 private:
  static constexpr double kNever = std::numeric_limits<double>::infinity();

  struct Deadline {
    double time;
    U64 order;
    NotifieeConst* reactor;
    bool isBefore(Deadline const& other) const {
      return time != other.time ? time < other.time : order < other.order;
    }
  };

  void deadlineIs(NotifieeConst& reactor, double time) const;
  void deadlineDel(NotifieeConst& reactor) const;
  /// Puts `deadline`, instead of what is at `index`, where it belongs.
  void placeIs(std::size_t index, Deadline const& deadline) const;

  double time_ = 0;
  // A heap in which every reactor knows its index: deadlines are moved all the time, and moving one
  // must not allocate. Four children stand in two cache lines.
  static constexpr std::size_t kChildren = 4;
  mutable std::vector<Deadline> deadlines_;
  mutable U64 nextOrder_ = 0;
};

/// Reacts to a deadline of a clock.
class KEX_API Clock::NotifieeConst : public NotifieeConstOf<Clock, Entity::NotifieeConst> {
 public:
  using NotifieeConstOf::NotifieeConstOf;
  ~NotifieeConst() override;
  /// Off: no reaction runs, and those that are pending are forgotten, though not that the deadline
  /// was reached: `onTime()` runs when notifications are on again.
  void hasNotificationActiveIs(bool active) override;

  /// The deadline in seconds; infinity when none is set.
  double timeMin() const {
    return deadline_ == kNoDeadline ? Clock::kNever : clock()->deadlines_[deadline_].time;
  }
  /// Sets the one deadline, in place of the one before, also of one that was reached but whose
  /// `onTime()` still waits for its turn: `onTime()` runs once when the clock has reached `time`
  /// (seconds). Infinity means none. Without an attached clock nothing happens.
  void timeMinIs(double time);

 protected:
  /// The time of the clock, which must be attached.
  double now() const {
    if (clock() == nullptr) {
      throwNullPtr();
    }
    return clock()->time();
  }
  virtual void onTime() {}
  void react(unsigned reaction) override;
  void handleAttached(bool attached) override;

 private:
  friend class Clock;
  Clock const* clock() const { return static_cast<Clock const*>(notifierPtr().ptr()); }

  static constexpr std::size_t kNoDeadline = ~std::size_t{0};

  std::size_t deadline_ = kNoDeadline;
  /// Whether `onTime()` is still to run for a deadline that is over.
  bool isReached_ = false;
};

/// The same, for reactors that change what they observe.
class KEX_API Clock::Notifiee : public NotifieeOf<Clock, Clock::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
};

}  // namespace Kex
