// A slot goes on whatever somebody else does to its identifier, at whatever moment.
#include <cmath>
#include <functional>
#include <stdexcept>

#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/Holder.h"
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Slot;
using Kex::GenericIf;
using Kex::Ptr;

Ptr<GenericIf> listOf(std::initializer_list<Ptr<GenericIf>> elements) {
  auto const list = Kex::make<GenericIf::List_>();
  for (auto const& element : elements) {
    list->append(element);
  }
  return list;
}

/// A request by name to attribute `id`; one that is refused does nothing.
void request(Slot& slot, Kex::AttributeId id, Kex::U8 code, Ptr<GenericIf> const& value) {
  auto const adapter = Kex::KexType::genericIf(Ptr<Kex::PtrInterface>(slot.identifier), false);
  try {
    adapter->access({.id = id, .code = code, .value = value.ptr()});
  } catch (Kex::Exception const&) {
    // The slot's state is what counts.
  }
}

auto calling(Kex::AttributeId id, std::initializer_list<Ptr<GenericIf>> arguments = {}) {
  return [id, list = listOf(arguments)](Slot& slot) { request(slot, id, Kex::kRead, list); };
}

auto writing(Kex::AttributeId id, Ptr<GenericIf> const& value) {
  return [id, value](Slot& slot) { request(slot, id, Kex::kWrite, value); };
}

struct Act {
  char const* what;
  std::function<void(Slot&)> happen;
};

std::vector<Act> acts() {
  auto const notifierIs = [](Slot& slot, Ptr<Kex::Clock const> const& clock) {
    slot.identifier->notifierIs(clock);
  };
  auto const off = [](Slot& slot, bool on) { slot.identifier->hasNotificationActiveIs(on); };
  return {
      {"notifier null and back",
       [=](Slot& slot) { notifierIs(slot, nullptr), notifierIs(slot, Slot::clock()); }},
      {"another clock and back",
       [=](Slot& slot) {
         notifierIs(slot, Kex::make<Kex::Clock>("another")), notifierIs(slot, Slot::clock());
       }},
      {"the same clock", [=](Slot& slot) { notifierIs(slot, Slot::clock()); }},
      {"notifier by name", writing(0x207, Kex::holderOf(Slot::clock()))},
      {"doSetupCheckSupplyRequest", calling(0x216, {Kex::holderOf(true)})},
      {"doInitialize", calling(0x11b)},
      {"doResetIdentifier", calling(0x120)},
      {"doResetIdentifier directly", [](Slot& slot) { slot.identifier->doResetIdentifier(); }},
      {"handlePollForInsertionRequest", calling(0x11d)},
      {"handleIdentifySupplyRequest", calling(0x11e)},
      {"handleCheckSupplyRequest", calling(0x11f)},
      {"handleConstructed", calling(0x218)},
      {"derivedConstructed 0 and 1",
       [](Slot& slot) {
         writing(0x217, Kex::holderOf(false))(slot);
         writing(0x217, Kex::holderOf(true))(slot);
       }},
      {"mfrId", writing(0x20e, Kex::holderOf(Kex::String8("EMERSON")))},
      {"no mfrId", writing(0x20e, Kex::holderOf(Kex::String8("")))},
      {"buffers gone and made",
       [](Slot& slot) {
         for (Kex::AttributeId id = 0x210; id <= 0x215; ++id) {
           request(slot, id, Kex::kDelete, {});
           writing(id, listOf({Kex::holderOf(Kex::U32{17})}))(slot);
         }
       }},
      {"buffers made again",
       [](Slot& slot) {
         for (Kex::AttributeId id = 0x210; id <= 0x215; ++id) {
           writing(id, listOf({Kex::holderOf(Kex::U32{20})}))(slot);
         }
       }},
      {"poll request replaced",
       [](Slot& slot) { slot.identifier->pollForInsertionRequestIs(slot.vorn->newRequest()); }},
      {"identify request replaced",
       [](Slot& slot) { slot.identifier->identifySupplyRequestIs(slot.vorn->newRequest()); }},
      {"check request gone and back",
       [](Slot& slot) {
         auto const request = slot.identifier->checkSupplyRequest();
         slot.identifier->checkSupplyRequestDel();
         slot.identifier->checkSupplyRequestIs(request);
       }},
      {"requests started",
       [](Slot& slot) {
         slot.identifier->checkSupplyRequest()->activeIs(true);
         slot.identifier->pollForInsertionRequest()->activeIs(true);
       }},
      {"requests withdrawn",
       [](Slot& slot) {
         slot.identifier->pollForInsertionRequest()->activeIs(false);
         slot.identifier->identifySupplyRequest()->activeIs(false);
         slot.identifier->checkSupplyRequest()->activeIs(false);
       }},
      {"completions",
       [](Slot& slot) {
         slot.identifier->doPollForInsertionRequestComplete(true);
         slot.identifier->doIdentifySupplyRequestComplete(true);
         slot.identifier->doCheckSupplyRequestComplete(true);
       }},
      {"off and on", [=](Slot& slot) { off(slot, false), off(slot, true); }},
      {"framework off, off and on, framework on",
       [=](Slot& slot) {
         slot.identifier->kexFwkActivityIs(false);
         off(slot, false), off(slot, true);
         EXPECT_FALSE(std::isfinite(slot.identifier->timeMin()));
         slot.identifier->kexFwkActivityIs(true);
       }},
      {"other intervals",
       [](Slot& slot) {
         writing(0x105, Kex::holderOf(0.5))(slot);
         writing(0x106, Kex::holderOf(0.1))(slot);
         writing(0x113, Kex::holderOf(9.0))(slot);
       }},
      {"intervals that are none",
       [](Slot& slot) {
         for (double const none : {0.0, -1.0, double{NAN}, HUGE_VAL}) {
           EXPECT_THROW(slot.identifier->pollIntervalIs(none), Kex::RangeException);
           EXPECT_THROW(slot.identifier->pollDelayIs(none), Kex::RangeException);
           EXPECT_THROW(slot.identifier->reviewIntervalIs(none), Kex::RangeException);
         }
       }},
  };
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
    act.happen(slot.run(1));
  }
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  for (Act const& act : acts()) {
    for (auto const& moment : moments) {
      SCOPED_TRACE(std::string(act.what) + ", while " + moment.what);
      Slot slot(moment.script);
      Slot::descriptorIs("stub", "P");
      slot.run(moment.at);
      act.happen(slot);
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

struct Mute final : Smbus::Transport {
  explicit Mute(bool throws) : isThrowing(throws) {}
  void start(Smbus::Transaction const&, Kex::U64, Smbus::AnswerSink&) override {
    if (isThrowing) {
      throw std::runtime_error("on strike");
    }
  }
  bool isThrowing;
};

TEST(DetectorAlive, onABusThatDoesNotAnswer) {
  struct {
    bool isThrowing;
    char const* reason;
    double each;  ///< from one poll to the next, in seconds
  } const rows[] = {
      {true, "reading MFR_ID failed: on strike", 1},
      {false, "reading MFR_ID failed: the transport did not answer within the bus timeout", 2.05},
  };
  for (auto const& row : rows) {
    Slot slot("*");
    auto const bus = Kex::make<Smbus::Bus>(std::make_unique<Mute>(row.isThrowing));
    slot.identifier->pollForInsertionRequestIs(Kex::make<Hardware::VornRequest>(bus));
    slot.run(10);
    EXPECT_EQ(slot.verdict(), "unreachable");
    EXPECT_EQ(slot.supply().reason, row.reason);
    EXPECT_EQ(slot.identifier->pollForInsertionRequest()->started(),
              static_cast<Kex::U64>(10 / row.each) + 1);
  }
}

/// Switches the identifier off in the midst of the walk.
struct SwitchingOff final : Ipmi::SupportedPowerSupplyDescriptorBase {
  explicit SwitchingOff(Slot& slot) : SupportedPowerSupplyDescriptorBase("off"), slot_(slot) {}
  void doGenerateFdl(Ptr<Ipmi::IdpromContents> const&) override {
    slot_.identifier->hasNotificationActiveIs(false);
  }
  Slot& slot_;
};

TEST(DetectorAlive, startsNothingWhileItIsOff) {
  Slot slot("....");
  Slot::registry().powerSupplyDescriptorIs(Kex::make<SwitchingOff>(slot));
  EXPECT_EQ(slot.run(5).timeline, "P0 P0 I0.2 I0.2");
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
