// What holds the identifiers of a slot: none is left running, none is hurt by what comes late.
#include "host/kex/base/Exception.h"
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Slot;

TEST(DetectorSlots, letGoOfIdentifiersWithAReadInFlight) {
  void (*const ways[])(Slot&) = {
      [](Slot& slot) { slot.driver->identifierDel("EmersonPmbus"); },
      [](Slot& slot) { slot.driver = nullptr; },
      [](Slot& slot) { slot.identifier->kexDoZombieReactors(true); },
  };
  // What is made once is made now.
  Slot("*").run(1);
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  for (auto const letGo : ways) {
    for (std::string const script : {"h", ".h", "..h", "...h", "....h", "....xh"}) {
      Slot slot(script);
      slot.run(0.5);
      letGo(slot);
      Kex::activityManager().runUntil(Slot::clock()->time() + 10);
      EXPECT_EQ(slot.verdict(), "none") << script;
      EXPECT_FALSE(slot.identifier->hasNotificationActive());
    }
  }
  EXPECT_EQ(Kex::VFPtrInterface::liveObjects(), before);
}

TEST(DetectorSlots, replaceAnIdentifierByASecondOfItsName) {
  Slot second("*");
  Slot first("h");
  first.run(0.5);
  first.driver->identifierIs("EmersonPmbus", second.identifier);
  EXPECT_FALSE(first.identifier->hasNotificationActive());
  EXPECT_EQ(first.identifier->path(), "");
  EXPECT_EQ(second.identifier->path(), "driver/EmersonPmbus");
  // Handing over the one that it has changes nothing, and nothing is no identifier.
  first.driver->identifierIs("EmersonPmbus", second.identifier);
  EXPECT_THROW(first.driver->identifierIs("EmersonPmbus", nullptr), Kex::RangeException);
  Kex::activityManager().runUntil(Slot::clock()->time() + 2);
  EXPECT_EQ(first.timeline, "P0");
  // Its own time began one second before the first one's, half a second before it was handed over.
  EXPECT_EQ(second.timeline, "P1.5 P1.5 I1.7 I1.7 C1.7 unrecognised C2.7");
}

TEST(DetectorSlots, forgetTheSupplyBeforeTheNextPoll) {
  Slot slot(".....1");
  slot.run(2.2);
  EXPECT_EQ(slot.log,
            "3 PowerSupplySlot S: Identifier::handleCheckSupplyRequest(succeeded); failCount=0; "
            "4 S: incomplete read by checkSupplyRequest: 1 < 2; fdl=; serialNum=; "
            "hwError=false; state=pollForInsertion; "
            "3 PowerSupplySlot S: Identifier::doResetIdentifier() S; > 58:99<>8");
  EXPECT_FALSE(slot.identifier->idprom()->productInfo() || slot.identifier->idprom()->header());
}

TEST(DetectorSlots, bearAnExceptionOfTheirOwn) {
  Slot slot("*");
  Slot::descriptorIs("stub", "P");
  slot.run(0.5);
  slot.identifier->pollForInsertionReadBufDel();
  slot.identifier->identifySupplyReadBufDel();
  slot.bus->script = "1*";
  slot.run(3.5);
  EXPECT_EQ(slot.supply().reason, "range exception: null ValidPtr");
  slot.identifier->pollForInsertionReadBufIs(17);
  slot.run(4.5);
  slot.identifier->identifySupplyReadBufIs(17);
  slot.run(6);
  EXPECT_EQ(slot.timeline,
            "P0 P0 I0.2 I0.2 C0.2 identified C1.2 unreadable unreadable P4.2 P4.2 unreadable "
            "P5.2 P5.2 I5.4 I5.4 C5.4 identified");
}

}  // namespace
