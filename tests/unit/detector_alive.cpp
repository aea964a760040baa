// A slot goes on whatever somebody else does to its identifier, at whatever moment.
#include <cmath>
#include <stdexcept>

#include "host/kex/generic/Holder.h"
#include "tests/support/OutsideActs.h"
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Act;
using busTest::Slot;
using Kex::Ptr;

/// What is done to any identifier, and what changes how a slot is timed.
std::vector<Act> acts() {
  auto acts = busTest::outsideActs();
  acts.push_back({"other intervals", [](busTest::ActedOn const& on) {
                    busTest::writeByName(on, 0x105, Kex::holderOf(0.5));
                    busTest::writeByName(on, 0x106, Kex::holderOf(0.1));
                    busTest::writeByName(on, 0x113, Kex::holderOf(9.0));
                  }});
  acts.push_back({"intervals that are none", [](busTest::ActedOn const& on) {
                    for (double const none : {0.0, -1.0, 1e-300, 0.0009, double{NAN}, HUGE_VAL}) {
                      EXPECT_THROW(on.identifier->pollIntervalIs(none), Kex::RangeException);
                      EXPECT_THROW(on.identifier->pollDelayIs(none), Kex::RangeException);
                      EXPECT_THROW(on.identifier->reviewIntervalIs(none), Kex::RangeException);
                      EXPECT_THROW(on.identifier->leastRepetitionIs(none), Kex::RangeException);
                      EXPECT_THROW(on.identifier->mostRepetitionIs(none), Kex::RangeException);
                    }
                  }});
  return acts;
}

int underWay(Slot const& slot) {
  auto const& identifier = *slot.identifier;
  return int{identifier.pollForInsertionRequest()->isUnderWay()} +
         int{identifier.identifySupplyRequest()->isUnderWay()} +
         int{identifier.checkSupplyRequest()->isUnderWay()};
}

TEST(DetectorAlive, whateverIsDoneToIt) {
  // What happens on the bus up to the act, and when that is; `h` takes a second.
  struct {
    char const* what;
    char const* script;
    double at;
  } const moments[] = {
      {"MFR_ID on the wire", "h*", 0.5},
      {"common header on the wire", ".h*", 0.5},
      {"the supply settles", "*", 0.1},
      {"area header on the wire", "..h*", 0.7},
      {"a chunk on the wire", "...h*", 0.7},
      {"first check on the wire", "....h*", 0.7},
      {"the next check is awaited", "*", 0.7},
      {"a check on the wire", ".....h*", 1.7},
      {"a retry of the check is awaited", ".....x*", 1.3},
      {"the next poll is awaited", "x*", 0.5},
  };
  // What is made once is made now.
  for (Act const& act : acts()) {
    Slot slot("*");
    act.happen({slot.run(1).identifier, slot.vorn});
  }
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  for (Act const& act : acts()) {
    for (auto const& moment : moments) {
      SCOPED_TRACE(std::string(act.what) + ", while " + moment.what);
      Slot slot(moment.script);
      Slot::descriptorIs("stub", "P");
      slot.run(moment.at);
      act.happen({slot.identifier, slot.vorn});
      EXPECT_LE(underWay(slot), 1);
      for (double const later : {0.01, 0.3, 1.0}) {
        slot.run(moment.at + later);
        EXPECT_EQ(underWay(slot) + int{std::isfinite(slot.identifier->timeMin())}, 1) << later;
      }
      slot.run(moment.at + 15);
      EXPECT_EQ(slot.verdict(), "identified");
      EXPECT_EQ(slot.identifier->state(), PowerSupplyDetector::IdentifierBase::kCheckSupply);
    }
  }
  EXPECT_EQ(Kex::VFPtrInterface::liveObjects(), before);
}

TEST(DetectorAlive, afterAnAnswerThatCameWhileItWasOff) {
  auto switches = busTest::switches();
  switches.push_back({"derivedConstructed, not by name", [](busTest::ActedOn const& on, bool is) {
                        on.identifier->derivedConstructedIs(is);
                      }});
  for (auto const& one : switches) {
    SCOPED_TRACE(one.what);
    Slot slot("h*");
    Slot::descriptorIs("stub", "P");
    one.be({slot.run(0.5).identifier, slot.vorn}, false);
    EXPECT_EQ(underWay(slot), 0);
    slot.run(1.5);
    EXPECT_EQ(underWay(slot) + int{std::isfinite(slot.identifier->timeMin())}, 0);
    one.be({slot.identifier, slot.vorn}, true);
    EXPECT_EQ(slot.run(4).verdict(), "identified");
  }
}

/// Throws what is no exception of the framework's, the first time that it is asked.
struct Throwing final : Ipmi::SupportedPowerSupplyDescriptorBase {
  Throwing() : SupportedPowerSupplyDescriptorBase("throwing") {}
  void doGenerateFdl(Ptr<Ipmi::IdpromContents> const&) override {
    managedIs(hasThrown);
    fdlIs("asked again");
    if (!std::exchange(hasThrown, true)) {
      throw 1;
    }
  }
  bool hasThrown = false;
};

TEST(DetectorAlive, afterAnExceptionOfAnyKind) {
  Slot slot("*");
  Slot::registry().powerSupplyDescriptorIs(Kex::make<Throwing>());
  EXPECT_EQ(slot.run(0.5).supply().reason, "unknown exception");
  EXPECT_EQ(slot.run(2).supply().fdl, "asked again");
}

/// Instead of handling the first check, does something else.
struct Careless final : Emerson::PmbusIdentifier::Identifier {
  using Identifier::Identifier;
  std::function<void(Careless&)> instead;
  void handleCheckSupplyRequest() override {
    instead ? std::exchange(instead, {})(*this) : Identifier::handleCheckSupplyRequest();
  }
};

TEST(DetectorAlive, afterAHandlerThatDoesNotDoItsPart) {
  struct {
    char const* what;
    std::function<void(Careless&)> instead;
    int transactions;  ///< until it is seen: those of the detection, and one that the act starts
  } const rows[] = {
      {"nothing follows", [](Careless&) {}, 5},
      {"two requests follow",
       [](Careless& identifier) {
         identifier.pollForInsertionRequest()->activeIs(true);
         identifier.identifySupplyRequest()->activeIs(true);
       },
       6},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.what);
    Slot slot("*");
    Slot::descriptorIs("stub", "P");
    int transactions = 0;
    slot.bus->onStart = [&](std::string const&) { ++transactions; };
    auto const careless = Kex::make<Careless>(
        Slot::clock(), slot.config, slot.status, slot.vorn->newRequest(), slot.vorn->newRequest(),
        slot.vorn->newRequest(), nullptr, nullptr, nullptr, Kex::U8{0x58}, Kex::U8{0xB0});
    careless->instead = row.instead;
    careless->hasNotificationActiveIs(true);
    slot.driver->identifierIs("careless", careless);
    Kex::activityManager().runUntil(Slot::clock()->time() + 0.5);
    EXPECT_EQ(transactions, row.transactions);
    Kex::activityManager().runUntil(Slot::clock()->time() + 1);
    EXPECT_EQ(slot.verdict(), "identified");
  }
}

struct Mute final : Smbus::Transport {
  explicit Mute(std::function<void()> what) : instead(std::move(what)) {}
  void start(Smbus::Transaction const&, Kex::U64, Smbus::AnswerSink&) override { instead(); }
  std::function<void()> instead;
};

TEST(DetectorAlive, onABusThatDoesNotAnswer) {
  struct {
    std::function<void()> instead;
    char const* reason;
    double each;  ///< from one poll to the next, in seconds
  } const rows[] = {
      {[] { throw std::runtime_error("on strike"); }, "reading MFR_ID failed: on strike", 1},
      {[] { throw 1; }, "reading MFR_ID failed: the transport threw an exception", 1},
      {[] {}, "reading MFR_ID failed: the transport did not answer within the bus timeout", 2.05},
  };
  for (auto const& row : rows) {
    Slot slot("*");
    auto const bus = Kex::make<Smbus::Bus>(std::make_unique<Mute>(row.instead));
    slot.identifier->pollForInsertionRequestIs(Kex::make<Hardware::VornRequest>(bus));
    slot.run(10);
    EXPECT_EQ(slot.verdict(), "unreachable");
    EXPECT_EQ(slot.supply().reason, row.reason);
    EXPECT_EQ(slot.identifier->pollForInsertionRequest()->started(),
              static_cast<Kex::U64>(10 / row.each) + 1);
  }
}

/// Interferes in the midst of the walk.
struct Interfering final : Ipmi::SupportedPowerSupplyDescriptorBase {
  explicit Interfering(std::function<void()> what)
      : SupportedPowerSupplyDescriptorBase("interfering"), interfere(std::move(what)) {}
  void doGenerateFdl(Ptr<Ipmi::IdpromContents> const&) override { interfere(); }
  std::function<void()> interfere;
};

TEST(DetectorAlive, startsNothingWhileItIsOff) {
  for (auto const& one : busTest::switches()) {
    SCOPED_TRACE(one.what);
    Slot slot("....");
    Slot::registry().powerSupplyDescriptorIs(Kex::make<Interfering>([&] {
      one.be({slot.identifier, slot.vorn}, false);
    }));
    EXPECT_EQ(slot.run(5).timeline, "P0 P0 I0.2 I0.2");
    // Nor do completions that somebody else reports.
    slot.identifier->doIdentifySupplyRequestComplete(true);
    slot.identifier->doPollForInsertionRequestComplete(false);
    EXPECT_EQ(slot.run(9).timeline, "P0 P0 I0.2 I0.2");
  }
}

TEST(DetectorAlive, handlesNothingBeforeItIsSwitchedOn) {
  Slot slot(".");
  auto const idle = Kex::make<Emerson::PmbusIdentifier::Identifier>(
      Slot::clock(), slot.config, slot.status, slot.vorn->newRequest(), slot.vorn->newRequest(),
      slot.vorn->newRequest(), nullptr, nullptr, nullptr, Kex::U8{0x58}, Kex::U8{0xB0});
  idle->doInitialize();
  idle->pollForInsertionRequest()->activeIs(true);
  Kex::activityManager().runUntil(Slot::clock()->time() + 1);
  EXPECT_EQ(idle->mfrId(), "");
}

TEST(DetectorAlive, tellsNothingThatSomebodyElseReports) {
  for (double const at : {0.1, 0.7}) {
    Slot slot("*");
    Slot::descriptorIs("stub", "P");
    auto const before = slot.run(at).timeline;
    slot.identifier->doIdentifySupplyRequestComplete(true);
    slot.identifier->doCheckSupplyRequestComplete(false);
    slot.identifier->doPollForInsertionRequestComplete(false);
    EXPECT_EQ(slot.run(at).timeline, before) << at;
    EXPECT_EQ(slot.run(at + 2).verdict(), "identified") << at;
  }
}

TEST(DetectorAlive, startsWhenItIsConstructedOnlyInItsSlot) {
  Slot slot("*");
  auto const late = Kex::make<Emerson::PmbusIdentifier::Identifier>(
      Slot::clock(), slot.config, slot.status, slot.vorn->newRequest(), slot.vorn->newRequest(),
      slot.vorn->newRequest(), nullptr, nullptr, nullptr, Kex::U8{0x58}, Kex::U8{0xB0});
  late->derivedConstructedIs(false);
  late->hasNotificationActiveIs(true);
  slot.driver->identifierIs("late", late);
  Kex::activityManager().runUntil(Slot::clock()->time() + 2);
  EXPECT_EQ(late->pollForInsertionRequest()->started(), 0U);
  late->derivedConstructedIs(true);
  Kex::activityManager().runUntil(Slot::clock()->time() + 2);
  EXPECT_EQ(slot.verdict(), "unrecognised");
}

TEST(DetectorAlive, standsStillWhileTheFrameworkIsOff) {
  Slot slot("*");
  slot.run(0.5).identifier->kexFwkActivityIs(false);
  slot.identifier->hasNotificationActiveIs(false);
  slot.identifier->hasNotificationActiveIs(true);
  EXPECT_EQ(slot.run(5).timeline, "P0 P0 I0.2 I0.2 C0.2 unrecognised");
}

TEST(DetectorAlive, forgetsWhatItToldWhenItIsSwitchedOff) {
  Slot slot("*");
  Slot::descriptorIs("stub", "P");
  slot.run(0.5).identifier->hasNotificationActiveIs(false);
  slot.identifier->hasNotificationActiveIs(true);
  slot.bus->script = "x*";
  EXPECT_EQ(slot.run(1.5).verdict(), "absent");
}

TEST(DetectorAlive, keepsTheOneBeforeWhenInitialisingFails) {
  Slot bad("", {}, 0x80);
  Slot slot("*");
  slot.run(0.5);
  EXPECT_THROW(slot.driver->identifierIs("EmersonPmbus", bad.identifier), Kex::RangeException);
  EXPECT_EQ(slot.driver->identifier("EmersonPmbus"), slot.identifier);
  slot.run(1.5);
  EXPECT_EQ(slot.timeline, "P0 P0 I0.2 I0.2 C0.2 unrecognised C1.2");
}

TEST(DetectorAlive, theSlotsVerdictIsTheBestOfItsIdentifiers) {
  Slot other("x*");
  Slot slot("*");
  Slot::descriptorIs("stub", "P");
  auto const second = Kex::make<busTest::Recording>(
      Slot::clock(), slot.config, slot.status, other.vorn->newRequest(), other.vorn->newRequest(),
      other.vorn->newRequest(), nullptr, nullptr, nullptr, Kex::U8{0x58}, Kex::U8{0xB0});
  second->note = [](std::string const&) {};
  second->hasNotificationActiveIs(true);
  slot.driver->identifierIs("second", second);
  slot.run(0);
  EXPECT_EQ(slot.verdict(), "absent");
  EXPECT_EQ(slot.run(0.5).verdict(), "identified");
  slot.driver->identifierDel("EmersonPmbus");
  EXPECT_EQ(slot.verdict(), "absent");
  slot.driver->identifierDel("second");
  EXPECT_EQ(slot.verdict(), "none");
  other.bus->script = "*";
}

}  // namespace
