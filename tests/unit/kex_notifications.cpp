// Notifications and deadlines: who is told, how often, in which order, and what survives deletion.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/kex/ActivityManager.h"
#include "host/kex/Entity.h"

namespace {

using Kex::Ptr;

void runPending() { Kex::activityManager().runPending(); }

class Lamp : public Kex::Entity {
 public:
  using Entity::Entity;
  enum Reaction : unsigned { kOnRed = kReactionsEnd, kOnGreen };
  void flash(Reaction colour = kOnRed) { changed(colour); }
  Ptr<Kex::PtrInterface> owned;
};

/// Counts what it is told of and then does as it was bidden.
class Watcher : public Kex::NotifieeConstOf<Lamp, Kex::Entity::NotifieeConst> {
 public:
  using NotifieeConstOf::NotifieeConstOf;
  std::vector<unsigned> told;
  std::function<void()> then;
  int depth = 0;

 protected:
  void react(unsigned reaction) override {
    EXPECT_EQ(depth++, 0) << "entered from inside another reaction";
    told.push_back(reaction);
    if (then) {
      auto const todo = then;  // the reactor may be gone afterwards
      --depth;
      return todo();
    }
    --depth;
  }
};

using Reactions = std::vector<unsigned>;

struct Scene {
  Ptr<Lamp> lamp = Kex::make<Lamp>("lamp");
  Ptr<Watcher> watcher = Kex::make<Watcher>();
};

TEST(KexNotifications, reachWhoIsRegisteredAttachedAndSwitchedOn) {
  using Step = std::function<void(Scene&)>;
  Step const nothing = [](Scene&) {};
  Step const join = [](Scene& s) {
    s.watcher->isRegisteredNotifieeIs(true);
    s.watcher->notifierIs(s.lamp);
  };
  auto const then = [](Step const& first, Step const& second) -> Step {
    return [=](Scene& s) { first(s), second(s); };
  };
  Step const off = [](Scene& s) { s.watcher->hasNotificationActiveIs(false); };
  Step const on = [](Scene& s) { s.watcher->hasNotificationActiveIs(true); };
  Step const leave = [](Scene& s) { s.watcher->isRegisteredNotifieeIs(false); };
  Step const drop = [](Scene& s) { s.watcher->notifierIs(nullptr); };
  Step const moveOn = [](Scene& s) { s.watcher->notifierIs(Kex::make<Lamp>("other")); };
  Step const attach = [](Scene& s) { s.watcher->notifierIs(s.lamp); };
  struct {
    char const* name;
    Step before;
    Step after;
    bool isTold;
  } const rows[] = {
      {"registered, then attached", join, nothing, true},
      {"attached, then registered",
       then(attach, [](Scene& s) { s.watcher->isRegisteredNotifieeIs(true); }), nothing, true},
      {"registered twice", then(join, join), nothing, true},
      {"never registered", attach, nothing, false},
      {"registered no more", then(join, leave), nothing, false},
      {"notifier dropped", then(join, drop), nothing, false},
      {"at another notifier", then(join, moveOn), nothing, false},
      {"switched off", then(join, off), nothing, false},
      {"switched off and on", then(join, then(off, on)), nothing, true},
      {"off while pending", join, off, false},
      {"off and on while pending", join, then(off, on), false},
      {"left while pending", join, leave, false},
      {"left and joined while pending", join, then(leave, join), false},
      {"dropped while pending", join, drop, false},
      {"destroyed while pending", join, [](Scene& s) { s.watcher = Kex::make<Watcher>(); }, false},
      {"notifier let go while pending", join, [](Scene& s) { s.lamp = nullptr; }, true},
  };
  for (auto const& row : rows) {
    Scene scene;
    row.before(scene);
    scene.lamp->flash();
    EXPECT_TRUE(scene.watcher->told.empty()) << row.name << ": told before the run loop's turn";
    row.after(scene);
    runPending();
    auto const expected = row.isTold ? Reactions{Lamp::kOnVersion, Lamp::kOnRed} : Reactions{};
    EXPECT_EQ(scene.watcher->told, expected) << row.name;
  }
}

TEST(KexNotifications, ofOneKindAreCoalescedAndNeverNested) {
  auto const lamp = Kex::make<Lamp>("lamp");
  auto const first = Kex::make<Watcher>(lamp);
  auto const second = Kex::make<Watcher>(lamp);
  for (int i = 0; i < 3; ++i) {
    lamp->flash(Lamp::kOnGreen);
    lamp->flash(Lamp::kOnRed);
  }
  EXPECT_EQ(lamp->version(), 6U);
  first->then = [&] {
    first->then = nullptr;
    lamp->flash(Lamp::kOnGreen);  // pending already: changes nothing
    runPending();                 // from inside: does nothing
    EXPECT_EQ(first->told.size(), 1U);
  };
  runPending();
  // The version changed anew after the second reactor, attached last, had been told of it first.
  Reactions const expected{Lamp::kOnVersion, Lamp::kOnVersion, Lamp::kOnRed, Lamp::kOnGreen};
  EXPECT_EQ(second->told, expected);
  EXPECT_EQ(first->told, expected);
}

TEST(KexNotifications, surviveWhatAReactionDeletes) {
  struct {
    char const* name;
    std::function<void(Ptr<Lamp>&, Ptr<Watcher>&, Ptr<Watcher>&)> deletes;
    std::size_t toldOther;  ///< reactions of the other reactor, of two
  } const rows[] = {
      {"itself", [](auto&, auto& self, auto&) { self = nullptr; }, 2},
      {"its notifier's last references",
       [](auto& lamp, auto& self, auto& other) {
         lamp = nullptr;
         other->notifierIs(nullptr);
         self->notifierIs(nullptr);
       },
       0},
      {"the other reactor", [](auto&, auto&, auto& other) { other = Kex::make<Watcher>(); }, 0},
      {"a notifier that holds the reactor",
       [](auto& lamp, auto& self, auto& other) {
         other->notifierIs(nullptr);
         lamp->owned = self;
         lamp = nullptr;
         Watcher& reactor = *self;
         self = nullptr;
         reactor.notifierIs(nullptr);
       },
       0},
  };
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  for (auto const& row : rows) {
    auto lamp = Kex::make<Lamp>("lamp");
    auto self = Kex::make<Watcher>();
    auto other = Kex::make<Watcher>(lamp);
    self->isRegisteredNotifieeIs(true);
    self->notifierIs(lamp);  // attached last, so told first
    self->then = [&] { row.deletes(lamp, self, other); };
    lamp->flash();
    runPending();
    EXPECT_EQ(other->told.size(), row.toldOther) << row.name;
    lamp = nullptr;
    self = other = nullptr;
    EXPECT_EQ(Kex::VFPtrInterface::liveObjects(), before) << row.name;
  }
}

TEST(KexNotifications, anExceptionLeavesTheOthersPending) {
  auto const lamp = Kex::make<Lamp>("lamp");
  auto const calm = Kex::make<Watcher>(lamp);
  auto const throwing = Kex::make<Watcher>(lamp);
  throwing->then = [&] {
    throwing->then = nullptr;
    throw std::runtime_error("trouble");
  };
  lamp->flash();
  EXPECT_THROW(runPending(), std::runtime_error);
  EXPECT_TRUE(calm->told.empty());
  runPending();
  EXPECT_EQ(calm->told.size(), 2U);
  EXPECT_EQ(throwing->told.size(), 2U);
}

/// Writes its name into a log when its deadline is reached.
class Alarm : public Kex::Clock::NotifieeConst {
 public:
  Alarm(Ptr<Kex::Clock> const& clock, std::string name, std::string& log)
      : NotifieeConst(Ptr<Kex::Clock const>(clock)), name_(std::move(name)), log_(log) {}
  std::function<void()> then;

 protected:
  void onTime() override {
    log_ += name_;
    if (then) {
      then();
    }
  }

 private:
  std::string name_;
  std::string& log_;
};

TEST(KexClock, runsEachDeadlineOnceInOrder) {
  constexpr double kNever = std::numeric_limits<double>::infinity();
  struct Alarms {
    Ptr<Kex::Clock> clock = Kex::make<Kex::Clock>("clock");
    std::string log;
    Ptr<Alarm> a = Kex::make<Alarm>(clock, "a", log);
    Ptr<Alarm> b = Kex::make<Alarm>(clock, "b", log);
    void leave() { a = nullptr; }
    void to(double time) {
      clock->timeIs(time);
      runPending();
    }
  };
  struct {
    char const* name;
    std::function<void(Alarms&)> steps;
    char const* log;
  } const rows[] = {
      {"not before its time", [](auto& s) { s.a->timeMinIs(2), s.to(1.999); }, ""},
      {"once", [](auto& s) { s.a->timeMinIs(2), s.to(2), s.to(3); }, "a"},
      {"one already past", [](auto& s) { s.to(5), s.a->timeMinIs(1), s.to(5); }, "a"},
      {"the earliest first", [](auto& s) { s.a->timeMinIs(2), s.b->timeMinIs(1), s.to(9); }, "ba"},
      {"equal ones as they were set",
       [](auto& s) { s.b->timeMinIs(1), s.a->timeMinIs(1), s.to(9); }, "ba"},
      {"the last one set", [](auto& s) { s.a->timeMinIs(1), s.a->timeMinIs(3), s.to(2); }, ""},
      {"none", [](auto& s) { s.a->timeMinIs(1), s.a->timeMinIs(kNever), s.to(2); }, ""},
      {"not a number",
       [](auto& s) {
         s.a->timeMinIs(1), s.a->timeMinIs(std::numeric_limits<double>::quiet_NaN()), s.to(2);
       },
       ""},
      {"set anew by itself",
       [](auto& s) {
         s.a->then = [&s] { s.a->timeMinIs(s.clock->time() + 1); };
         s.a->timeMinIs(1), s.to(1), s.to(1.5), s.to(2), s.to(9);
       },
       "aaa"},
      {"moved when reached but not run",
       [](auto& s) {
         s.b->then = [&s] { s.a->timeMinIs(5); };
         s.b->timeMinIs(1), s.a->timeMinIs(1), s.to(2), s.log += ".", s.to(5);
       },
       "b.a"},
      {"cancelled when reached but not run",
       [](auto& s) {
         s.b->then = [&s] { s.a->timeMinIs(kNever); };
         s.b->timeMinIs(1), s.a->timeMinIs(1), s.to(2), s.to(9);
       },
       "b"},
      {"unregistered",
       [](auto& s) { s.a->timeMinIs(1), s.a->isRegisteredNotifieeIs(false), s.to(2); }, ""},
      {"destroyed", [](auto& s) { s.a->timeMinIs(1), s.leave(), s.to(2); }, ""},
      {"at a clock that runs backwards",
       [](auto& s) { s.to(3), s.to(1), s.a->timeMinIs(2), s.to(1); }, "a"},
      {"at the end of time", [](auto& s) { s.a->timeMinIs(1), s.to(kNever), s.b->timeMinIs(9); },
       "a"},
  };
  for (auto const& row : rows) {
    Alarms alarms;
    row.steps(alarms);
    EXPECT_EQ(alarms.log, row.log) << row.name;
  }
}

TEST(KexClock, keepsManyMovingDeadlinesInOrder) {
  auto const clock = Kex::make<Kex::Clock>("clock");
  std::string log;
  std::vector<Ptr<Alarm>> alarms;
  std::vector<double> fired;
  unsigned state = 1;
  auto const random = [&state](unsigned below) {
    state = state * 1664525U + 1013904223U;
    return (state >> 16) % below;
  };
  for (int i = 0; i < 100; ++i) {
    alarms.push_back(Kex::make<Alarm>(clock, "x", log));
  }
  for (int i = 0; i < 2000; ++i) {
    auto& alarm = alarms[random(100)];
    if (random(5) == 0) {
      alarm = Kex::make<Alarm>(clock, "x", log);
    }
    double const time = random(50);
    alarm->timeMinIs(time);
    alarm->then = [time, &fired] { fired.push_back(time); };
  }
  std::vector<double> expected;
  for (auto const& alarm : alarms) {
    if (alarm->timeMin() < 50) {
      expected.push_back(alarm->timeMin());
    }
  }
  std::ranges::sort(expected);
  ASSERT_GT(expected.size(), 50U);
  EXPECT_EQ(clock->nextDeadline(), expected.front());
  clock->timeIs(100);
  runPending();
  EXPECT_EQ(fired, expected);
}

TEST(KexClock, runUntilStepsFromDeadlineToDeadline) {
  Ptr<Kex::Clock> const clock = Kex::activityManager().config().clock();
  double const start = clock->time();
  std::string log;
  auto const alarm = Kex::make<Alarm>(clock, "a", log);
  std::vector<double> seen;
  alarm->then = [&] {
    seen.push_back(clock->time() - start);
    alarm->timeMinIs(clock->time() + 0.25);
  };
  alarm->timeMinIs(start + 0.5);
  Kex::activityManager().runUntil(start + 1.125);
  EXPECT_EQ(seen, (std::vector<double>{0.5, 0.75, 1.0}));
  EXPECT_EQ(clock->time(), start + 1.125);
}

}  // namespace
