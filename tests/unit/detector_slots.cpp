// What holds the identifiers of a slot: none is left running, none is hurt by what comes late.
#include "host/kex/Exception.h"
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Lines;
using busTest::Slot;

TEST(DetectorSlots, letGoOfIdentifiersWithAReadInFlight) {
  struct {
    char const* what;
    void (*letGo)(Slot&);
  } const rows[] = {
      {"deleted", [](Slot& slot) { slot.driver->identifierDel("EmersonPmbus"); }},
      {"driver gone", [](Slot& slot) { slot.driver = nullptr; }},
      {"zombie", [](Slot& slot) { slot.identifier->kexDoZombieReactors(true); }},
  };
  // What is made once is made now.
  Slot("*").run(1);
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  for (auto const& row : rows) {
    for (std::string const script : {"h", ".h", "..h", "...h", "....h", "....xh"}) {
      Slot slot(script);
      slot.run(0.5);
      auto const bus = slot.vorn;
      row.letGo(slot);
      auto const length = slot.identifier->identifySupplyReadBuf()->str();
      Kex::activityManager().runUntil(Slot::clock()->time() + 10);
      EXPECT_EQ(slot.verdict(), "none") << row.what << " " << script;
      EXPECT_FALSE(slot.identifier->hasNotificationActive());
      EXPECT_EQ(slot.identifier->identifySupplyReadBuf()->str(), length);
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
  EXPECT_EQ(first.driver->identifier("EmersonPmbus"), second.identifier);
  // Handing over the one that it has changes nothing, and nothing is no identifier.
  first.driver->identifierIs("EmersonPmbus", second.identifier);
  EXPECT_THROW(first.driver->identifierIs("EmersonPmbus", nullptr), Kex::RangeException);
  Kex::activityManager().runUntil(Slot::clock()->time() + 2);
  EXPECT_EQ(first.timeline(), "P0");
  // Its own time began one second before the first one's, half a second before it was handed over.
  EXPECT_EQ(second.timeline(), "2P1.5 2I1.7 C1.7 unrecognised C2.7");
}

TEST(DetectorSlots, forgetTheSupplyBeforeTheNextPoll) {
  Slot slot(".....1");
  slot.run(2.2);
  EXPECT_EQ(slot.log,
            (Lines{"3 PowerSupplySlot S: Identifier::handleCheckSupplyRequest(succeeded)",
                   "failCount=0", "4 S: incomplete read by checkSupplyRequest: 1 < 2", "fdl=''",
                   "serialNum=''", "no hwError", "state=2",
                   "3 PowerSupplySlot S: Identifier::doResetIdentifier() S", "> 58:99 r8"}));
  EXPECT_FALSE(slot.identifier->idprom()->productInfo() || slot.identifier->idprom()->header());
}

TEST(DetectorSlots, bearAnExceptionOfTheirOwn) {
  Slot slot("*");
  slot.descriptorIs("stub", "P");
  slot.run(0.5);
  slot.identifier->pollForInsertionReadBufDel();
  slot.identifier->identifySupplyReadBufDel();
  slot.bus->script = "1*";
  slot.run(3.5);
  EXPECT_EQ(slot.supply().reason, "range exception: null ValidPtr");
  slot.identifier->pollForInsertionReadBufIs(17);
  slot.run(4.5);
  EXPECT_EQ(slot.verdict(), "unreadable");
  slot.identifier->identifySupplyReadBufIs(17);
  slot.run(6);
  EXPECT_EQ(
      slot.timeline(),
      "2P0 2I0.2 C0.2 identified C1.2 2unreadable 2P4.2 unreadable 2P5.2 2I5.4 C5.4 identified");
}

}  // namespace
