// Notifications and deadlines: who is told, how often, in which order, and what survives deletion.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/kex/ActivityManager.h"
#include "host/kex/Entity.h"

namespace {

using Kex::Ptr;
using Reactions = std::vector<unsigned>;

void runPending() { Kex::activityManager().runPending(); }

class Lamp : public Kex::Entity {
 public:
  using Entity::Entity;
  enum Reaction : unsigned { kOnRed = kReactionsEnd, kOnGreen };
  void flash(Reaction colour = kOnRed) { changed(colour); }
  Ptr<Kex::PtrInterface> owned;
};

/// Notes what it is told of and then does as it was bidden.
class Watcher : public Kex::NotifieeConstOf<Lamp, Kex::Entity::NotifieeConst> {
 public:
  using NotifieeConstOf::NotifieeConstOf;
  Reactions told;
  std::function<void()> then;

 protected:
  void react(unsigned reaction) override {
    told.push_back(reaction);
    if (auto const todo = then) {
      todo();  // the reactor may be gone afterwards
    }
  }
};

struct Scene {
  Ptr<Lamp> lamp = Kex::make<Lamp>("lamp");
  Ptr<Watcher> watcher = Kex::make<Watcher>();
};

TEST(KexNotifications, reachWhoIsRegisteredAttachedAndSwitchedOn) {
  /// a attach, d drop, o attach to another; r register, u unregister; + on, - off; x destroy;
  /// l let the notifier go.
  auto const take = [](Scene& s, char const* steps) {
    for (; *steps != 0; ++steps) {
      switch (*steps) {
        case 'a': s.watcher->notifierIs(s.lamp); break;
        case 'd': s.watcher->notifierIs(nullptr); break;
        case 'o': s.watcher->notifierIs(Kex::make<Lamp>("other")); break;
        case 'r': s.watcher->isRegisteredNotifieeIs(true); break;
        case 'u': s.watcher->isRegisteredNotifieeIs(false); break;
        case '+': s.watcher->hasNotificationActiveIs(true); break;
        case '-': s.watcher->hasNotificationActiveIs(false); break;
        case 'x': s.watcher = Kex::make<Watcher>(); break;
        default: s.lamp = nullptr;
      }
    }
  };
  struct {
    char const* before;
    char const* pending;  ///< after the change, before the run loop's turn
    bool isTold;
  } const rows[] = {
      {"ra", "", true},   {"ar", "", true},    {"raar", "", true},  {"a", "", false},
      {"r", "", false},   {"rau", "", false},  {"rad", "", false},  {"rao", "", false},
      {"ra-", "", false}, {"ra-+", "", true},  {"raua", "", false}, {"radau", "", false},
      {"ra", "-", false}, {"ra", "-+", false}, {"ra", "u", false},  {"ra", "ur", false},
      {"ra", "d", false}, {"ra", "da", false}, {"ra", "x", false},  {"ra", "l", true},
  };
  for (auto const& row : rows) {
    Scene scene;
    take(scene, row.before);
    scene.lamp->flash();
    EXPECT_TRUE(scene.watcher->told.empty()) << row.before << ": told before the loop's turn";
    take(scene, row.pending);
    runPending();
    auto const expected = row.isTold ? Reactions{Lamp::kOnVersion, Lamp::kOnRed} : Reactions{};
    EXPECT_EQ(scene.watcher->told, expected) << row.before << ' ' << row.pending;
  }
}

TEST(KexNotifications, ofOneKindAreCoalescedAndNeverNested) {
  auto const lamp = Kex::make<Lamp>("lamp");
  auto const second = Kex::make<Watcher>(lamp);
  auto const first = Kex::make<Watcher>(lamp);  // attached last, told first
  for (auto const colour : {Lamp::kOnGreen, Lamp::kOnRed, Lamp::kOnGreen}) {
    lamp->flash(colour);
  }
  EXPECT_EQ(lamp->version(), 3U);
  first->then = [&] {
    first->then = nullptr;
    lamp->flash(Lamp::kOnGreen);  // of its reactions only the version's is not pending already
    runPending();
    EXPECT_EQ(first->told.size() + second->told.size(), 1U) << "run from inside a reaction";
  };
  runPending();
  EXPECT_EQ(first->told,
            (Reactions{Lamp::kOnVersion, Lamp::kOnVersion, Lamp::kOnRed, Lamp::kOnGreen}));
  EXPECT_EQ(second->told, (Reactions{Lamp::kOnVersion, Lamp::kOnRed, Lamp::kOnGreen}));
}

TEST(KexNotifications, surviveWhatAReactionDeletes) {
  struct Two : Scene {
    Ptr<Watcher> other = Kex::make<Watcher>(lamp);
  };
  struct {
    char const* name;
    void (*does)(Two&);     ///< what the watcher's reaction does
    std::size_t toldOther;  ///< reactions of the other reactor
  } const rows[] = {
      {"deletes itself", [](Two& s) { s.watcher = nullptr; }, 2},
      {"deletes the other", [](Two& s) { s.other = nullptr; }, 0},
      {"releases the notifier",
       [](Two& s) {
         s.lamp = nullptr;
         s.other->notifierIs(nullptr);
         s.watcher->notifierIs(nullptr);
       },
       0},
      {"releases a notifier that holds the reactor",
       [](Two& s) {
         s.other->notifierIs(nullptr);
         Watcher& reactor = *s.watcher;
         s.lamp->owned = s.watcher;
         s.lamp = nullptr;
         s.watcher = nullptr;
         reactor.notifierIs(nullptr);
       },
       0},
      {"throws",
       [](Two& s) {
         s.watcher->then = nullptr;
         throw std::runtime_error("trouble");
       },
       2},
  };
  Kex::activityManager();  // its clock is made on first use
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  for (auto const& row : rows) {
    {
      Two scene;
      scene.watcher->isRegisteredNotifieeIs(true);
      scene.watcher->notifierIs(scene.lamp);
      scene.watcher->then = [&] { row.does(scene); };
      scene.lamp->flash();
      try {
        runPending();
      } catch (std::runtime_error const&) {
        runPending();  // the others are still pending
      }
      EXPECT_EQ(scene.other ? scene.other->told.size() : 0, row.toldOther) << row.name;
    }
    EXPECT_EQ(Kex::VFPtrInterface::liveObjects(), before) << row.name;
  }
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

constexpr double kNever = std::numeric_limits<double>::infinity();

TEST(KexClock, runsEachDeadlineOnceInOrder) {
  struct Alarms {
    Ptr<Kex::Clock> clock = Kex::make<Kex::Clock>("clock");
    std::string log;
    Ptr<Alarm> a = Kex::make<Alarm>(clock, "a", log);
    Ptr<Alarm> b = Kex::make<Alarm>(clock, "b", log);
    void set(double timeOfA, double timeOfB = kNever) const {
      b->timeMinIs(timeOfB);
      a->timeMinIs(timeOfA);
    }
    /// The first reaction, which is b's, moves the other alarm.
    void setBoth(double movedTo) const {
      b->then = [this, movedTo] { a->timeMinIs(movedTo); };
      set(1, 1);
    }
    void to(double time) {
      clock->timeIs(time);
      runPending();
      log += '.';
    }
  };
  struct {
    char const* name;
    void (*steps)(Alarms&);
    char const* log;
  } const rows[] = {
      {"at its time, once", [](auto& s) { s.set(2), s.to(1.9), s.to(2), s.to(3); }, ".a.."},
      {"when past already", [](auto& s) { s.to(5), s.set(1), s.to(5); }, ".a."},
      {"the earliest first", [](auto& s) { s.set(1, 2), s.to(9); }, "ab."},
      {"equal ones as they were set", [](auto& s) { s.set(1, 1), s.to(9); }, "ba."},
      {"the last one set", [](auto& s) { s.set(1), s.set(3), s.to(2), s.to(3); }, ".a."},
      {"not when cancelled", [](auto& s) { s.set(1), s.set(kNever), s.to(2); }, "."},
      {"not for no number", [](auto& s) { s.set(1), s.set(kNever - kNever), s.to(2); }, "."},
      {"later when moved in its turn", [](auto& s) { s.setBoth(5), s.to(2), s.to(5); }, "b.a."},
      {"not when cancelled in its turn", [](auto& s) { s.setBoth(kNever), s.to(9); }, "b."},
      {"not unregistered", [](auto& s) { s.set(1), s.a->isRegisteredNotifieeIs(false), s.to(2); },
       "."},
      {"not when it is gone",
       [](auto& s) {
         s.set(1);
         s.a = nullptr;
         s.to(2);
       },
       "."},
      {"though time runs backwards", [](auto& s) { s.to(3), s.to(1), s.set(2), s.to(1); }, "..a."},
      {"at the end of time", [](auto& s) { s.set(1), s.to(kNever), s.to(kNever); }, "a.."},
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
  std::vector<double> fired;
  std::vector<Ptr<Alarm>> alarms(100);
  std::minstd_rand random(1);
  for (int i = 0; i < 2000; ++i) {
    auto& alarm = alarms[random() % alarms.size()];
    if (!alarm || random() % 5 == 0) {
      alarm = Kex::make<Alarm>(clock, "x", log);
    }
    alarm->timeMinIs(static_cast<double>(random() % 50));
    alarm->then = [time = alarm->timeMin(), &fired] { fired.push_back(time); };
  }
  std::vector<double> expected;
  std::ranges::transform(alarms, std::back_inserter(expected),
                         [](auto& a) { return a->timeMin(); });
  std::ranges::sort(expected);
  EXPECT_EQ(clock->nextDeadline(), expected.front());
  clock->timeIs(100);
  runPending();
  EXPECT_EQ(fired, expected);
}

}  // namespace
