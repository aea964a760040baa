// Notifications and deadlines: who is told, how often, in which order, and what survives deletion.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/hardware/PowerSupplySlot.h"
#include "host/kex/entity/Entity.h"
#include "host/kex/time/ActivityManager.h"

namespace {

using Kex::Ptr;
using Reactions = std::vector<unsigned>;

void runPending() { Kex::activityManager().runPending(); }

struct Lamp : Kex::Entity {
  using Entity::Entity;
  enum Reaction : unsigned { kOnRed = kReactionsEnd, kOnGreen };
  void flash(Reaction colour = kOnRed) { changed(colour); }
  Ptr<Kex::PtrInterface> owned;
};

/// Notes what it is told of and then does as it was bidden.
struct Watcher : Kex::NotifieeConstOf<Lamp, Kex::Entity::NotifieeConst> {
  using NotifieeConstOf::NotifieeConstOf;
  Reactions told;
  std::function<void()> then;

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
  std::map<char, void (*)(Scene&)> const steps{
      {'a', [](auto& s) { s.watcher->notifierIs(s.lamp); }},                    // attach
      {'d', [](auto& s) { s.watcher->notifierIs(nullptr); }},                   // drop
      {'o', [](auto& s) { s.watcher->notifierIs(Kex::make<Lamp>("other")); }},  // attach to another
      {'r', [](auto& s) { s.watcher->isRegisteredNotifieeIs(true); }},
      {'u', [](auto& s) { s.watcher->isRegisteredNotifieeIs(false); }},
      {'+', [](auto& s) { s.watcher->hasNotificationActiveIs(true); }},
      {'-', [](auto& s) { s.watcher->hasNotificationActiveIs(false); }},
      {'z', [](auto& s) { s.watcher->kexDoZombieReactors(true); }},
      {'Z', [](auto& s) { s.watcher->kexDoZombieReactors(false); }},
      {'x', [](auto& s) { s.watcher = Kex::make<Watcher>(); }},  // destroy
      {'l', [](auto& s) { s.lamp = nullptr; }},                  // let the notifier go
  };
  struct {
    std::string before;
    std::string pending;  ///< after the change, before the run loop's turn
    bool isTold;
  } const rows[] = {
      {"ra", "", true},   {"ar", "", true},    {"raar", "", true},  {"a", "", false},
      {"r", "", false},   {"rau", "", false},  {"rad", "", false},  {"rao", "", false},
      {"ra-", "", false}, {"ra-+", "", true},  {"raua", "", false}, {"radau", "", false},
      {"ra", "-", false}, {"ra", "-+", false}, {"ra", "u", false},  {"ra", "ur", false},
      {"raz", "", false}, {"razZ", "", true},  {"zra", "", true},   {"ra", "z", false},
      {"ra", "d", false}, {"ra", "da", false}, {"ra", "x", false},  {"ra", "l", true},
  };
  for (auto const& [before, pending, isTold] : rows) {
    Scene scene;
    std::ranges::for_each(before, [&](char step) { steps.at(step)(scene); });
    scene.lamp->flash();
    EXPECT_TRUE(scene.watcher->told.empty()) << before << ": told before the loop's turn";
    std::ranges::for_each(pending, [&](char step) { steps.at(step)(scene); });
    runPending();
    auto const expected = isTold ? Reactions{Lamp::kOnVersion, Lamp::kOnRed} : Reactions{};
    EXPECT_EQ(scene.watcher->told, expected) << before << ' ' << pending;
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

struct Alarm : Kex::Clock::Notifiee {
  using Notifiee::Notifiee;
  std::function<void()> then;
  void onTime() override { then(); }
};

TEST(KexClock, runsEachDeadlineOnceInOrder) {
  // a and b set an alarm's deadline, > the time; m when b's is reached, a's is set;
  // u unregister a, x destroy it; - and + switch its notifications; t sets the time, but leaves
  // what is pending for the loop.
  struct {
    char const* name;
    char const* steps;
    char const* log;  ///< which alarm went off, . after each time
  } const rows[] = {
      {"at its time, once", "a2 >1.9 >2 >3", ".a.."},
      {"when past already", ">5 a1 >5", ".a."},
      {"the earliest first", "b2 a1 >9", "ab."},
      {"equal ones as they were set", "b1 a1 >9", "ba."},
      {"the last one set", "a1 a3 >2 >3", ".a."},
      {"not when cancelled", "a1 ainf >2", "."},
      {"not for no number", "a1 anan >2", "."},
      {"later when moved in its turn", "b1 a1 m5 >2 >5", "b.a."},
      {"not when cancelled in its turn", "b1 a1 minf >9", "b."},
      {"not unregistered", "a1 u >2", "."},
      {"not when it is gone", "a1 x >2", "."},
      {"once switched on again", "a1 - >2 + >3 >4", ".a.."},
      {"though switched off before its turn", "a1 t2 - + >3 >4", "a.."},
      {"when moved while switched off", "a1 - >2 a5 + >3 >5", "..a."},
      {"not when cancelled while switched off", "a1 - >2 ainf + >3", ".."},
      {"not when unregistered while switched off", "a1 - >2 u + >3", ".."},
      {"though time runs backwards", ">3 >1 a2 >1", "..a."},
      {"at the end of time", "a1 >inf >inf", "a.."},
  };
  for (auto const& row : rows) {
    Ptr<Kex::Clock> const clock = Kex::make<Kex::Clock>("clock");
    auto a = Kex::make<Alarm>(clock);
    auto const b = Kex::make<Alarm>(clock);
    std::string log;
    a->then = [&] { log += 'a'; };
    b->then = [&] { log += 'b'; };
    std::istringstream steps(row.steps);
    for (std::string step; steps >> step;) {
      double const time = std::strtod(&step[1], nullptr);
      switch (step[0]) {
        case 'a': a->timeMinIs(time); break;
        case 'b': b->timeMinIs(time); break;
        case 'm': b->then = [&, time] { log += 'b', a->timeMinIs(time); }; break;
        case '-': a->hasNotificationActiveIs(false); break;
        case '+': a->hasNotificationActiveIs(true); break;
        case 't': clock->timeIs(time); break;
        case 'u': a->isRegisteredNotifieeIs(false); break;
        case 'x': a = nullptr; break;
        default: clock->timeIs(time), runPending(), log += '.';
      }
    }
    EXPECT_EQ(log, row.log) << row.name;
  }
}

TEST(KexNotifications, giveAReactorWhatItMayChange) {
  struct Doubter : Hardware::PowerSupplySlot::SlotStatus::Notifiee {
    using Notifiee::Notifiee;
    int told = 0;
    void onSupply() override {
      if (++told == 1) {
        auto doubted = *notifier()->supply();
        doubted.reason = "doubted";
        notifier()->supplyIs(doubted);
      }
    }
  };
  auto const status = Kex::make<Hardware::PowerSupplySlot::SlotStatus>("status");
  auto const doubter = Kex::make<Doubter>(status);
  status->supplyIs({});
  runPending();
  EXPECT_EQ(doubter->told, 2);
  EXPECT_EQ(status->supply()->reason, "doubted");
}

TEST(KexClock, keepsManyMovingDeadlinesInOrder) {
  Ptr<Kex::Clock> const clock = Kex::make<Kex::Clock>("clock");
  std::vector<double> fired;
  std::vector<Ptr<Alarm>> alarms(100);
  std::minstd_rand random(1);
  for (int i = 0; i < 2000; ++i) {
    auto& alarm = alarms[random() % alarms.size()];
    if (!alarm || random() % 5 == 0) {
      alarm = Kex::make<Alarm>(clock);
    }
    auto const time = static_cast<double>(random() % 50);
    alarm->timeMinIs(time);
    alarm->then = [time, &fired] { fired.push_back(time); };
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
