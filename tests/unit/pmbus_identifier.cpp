// The identifier's own attributes and operations, and the factory that gives slots their
// identifiers.
#include <set>

#include "pmbus/IdentifierFactory.h"
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Lines;
using busTest::Slot;
using Emerson::PmbusIdentifier::Identifier;

template <class Work>
std::string thrownBy(Work const& work) {
  try {
    work();
  } catch (Kex::RangeException const& why) {
    return why.what();
  }
  return "nothing";
}

TEST(PmbusIdentifier, isConstructedWithoutTouchingItsRequests) {
  Slot slot;
  Identifier const& identifier = *slot.identifier;
  EXPECT_EQ(identifier.identifierName(), "EmersonPmbus");
  EXPECT_TRUE(identifier.constructed() && identifier.derivedConstructed());
  EXPECT_EQ(identifier.state(), Identifier::kConstructed);
  EXPECT_FALSE(identifier.initialized() || identifier.productInfoBuf());
  EXPECT_EQ(identifier.fruInfoAddr() | identifier.mfrIdAddr().encoded(), 0U);
  EXPECT_EQ(identifier.mfrId(), "");
  EXPECT_EQ(identifier.commonAreaBuf()->len(), 8U);
  EXPECT_EQ(identifier.productInfoHeaderBuf()->len(), 2U);
  Kex::activityManager().runPending();
  EXPECT_EQ(slot.timeline(), "");
}

TEST(PmbusIdentifier, takesDeviceAddressesOfSevenBits) {
  struct {
    Kex::U8 deviceId;
    char const* thrown;
    Kex::U64 fruInfoAddr;
    Kex::U64 mfrIdAddr;
  } const rows[] = {
      // Device, command, 1000 ms.
      {0x00, "nothing", 0x3E8'B000, 0x3E8'9900},
      {0x58, "nothing", 0x3E8'B058, 0x3E8'9958},
      {0x7F, "nothing", 0x3E8'B07F, 0x3E8'997F},
      {0x80, "U7::value < 0 or > 0x7f not allowed", 0, 0},
      {0xFF, "U7::value < 0 or > 0x7f not allowed", 0, 0},
  };
  for (auto const& row : rows) {
    Slot slot("", {}, "EMERSON", row.deviceId);
    EXPECT_EQ(thrownBy([&] { slot.identifier->doInitialize(); }), row.thrown);
    bool const isGood = row.mfrIdAddr != 0;
    EXPECT_EQ(slot.identifier->initialized(), isGood);
    EXPECT_EQ(slot.identifier->fruInfoAddr(), row.fruInfoAddr);
    EXPECT_EQ(slot.identifier->mfrIdAddr().encoded(), row.mfrIdAddr);
    EXPECT_EQ(slot.identifier->pollForInsertionRequest()->operations().size(), isGood ? 1U : 0U);
    EXPECT_EQ(slot.timeline(), "");
  }
}

TEST(PmbusIdentifier, asksForTheLongestMfrIdAndAcceptsWhatItsTableAccepts) {
  struct {
    void (*edit)(Identifier&);
    Kex::U32 entries;
    char const* operation;
    char const* answered;
    bool isAccepted;
  } const rows[] = {
      {[](Identifier&) {}, 2, "8", "EMERSON", true},
      {[](Identifier& it) { it.mfrIdSupportedIs("ABC", false); }, 3, "8", "EMERSON", true},
      {[](Identifier& it) { it.mfrIdSupportedIs("EMERSON", false); }, 2, "8", "EMERSON", false},
      {[](Identifier& it) { it.mfrIdSupportedIs("ELEVEN BYTE", false); }, 3, "12", "ELEVEN BYTE",
       false},
      {[](Identifier& it) { it.mfrIdSupportedIs("ELEVEN BYTE", true); }, 3, "12", "ELEVEN BYTE",
       true},
      // The read grew with the table, so a shorter one is followed by NULs.
      {[](Identifier& it) { it.mfrIdSupportedIs("ELEVEN BYTE", true); }, 3, "12", "EMERSON", false},
      {[](Identifier& it) { it.mfrIdSupportedIs("SIXTEEN BYTES---", true); }, 3, "17",
       "SIXTEEN BYTES---", true},
      {[](Identifier& it) { it.mfrIdSupportedIs("TWENTY BYTES--------", true); }, 3, "17",
       "TWENTY BYTES--------", false},
      {[](Identifier& it) { it.mfrIdSupportedDelAll(); }, 0, "1", "EMERSON", false},
      {[](Identifier& it) {
         it.mfrIdSupportedDel("EMERSON");
         it.mfrIdSupportedIs("ACME", true);
         it.mfrIdSupportedDel("ARTESYN");
         it.mfrIdSupportedDel("ARTESYN");
       },
       1, "5", "ACME", true},
      {[](Identifier& it) {
         it.mfrIdSupportedIs("X", true);
         for (Identifier::MfrIdSupportedIterator walk(it); walk; ++walk) {
           if (walk->key() != "X") {
             it.mfrIdSupportedDel(walk);
           }
         }
       },
       1, "2", "X", true},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(std::string(row.operation) + row.answered);
    Slot slot(".", {}, row.answered);
    Lines operations;
    slot.bus->onStart = [&](std::string const& operation) { operations.push_back(operation); };
    row.edit(*slot.identifier);
    EXPECT_EQ(slot.identifier->mfrIdSupportedTable().size(), row.entries);
    slot.run();
    EXPECT_EQ(operations[0], std::string("58:99 r") + row.operation);
    EXPECT_EQ(operations.size(), row.isAccepted ? 2U : 1U);
    EXPECT_EQ(slot.verdict(), row.isAccepted ? "none" : "unsupportedManufacturer");
  }
}

TEST(PmbusIdentifier, keepsItsBuffers) {
  using I = Identifier;
  using BufPtr = Kex::Ptr<Hal::Buf>;
  struct {
    BufPtr const& (Identifier::*buf)() const;
    BufPtr (Identifier::*make)(Kex::U32) const;
    BufPtr (Identifier::*is)(Kex::U32);
    BufPtr (Identifier::*del)();
    Kex::U32 size;
    Kex::U32 newLength;
  } const rows[] = {
      {&I::pollForInsertionWriteBuf, &I::newPollForInsertionWriteBuf,
       &I::pollForInsertionWriteBufIs, &I::pollForInsertionWriteBufDel, 2, 2},
      {&I::identifySupplyWriteBuf, &I::newIdentifySupplyWriteBuf, &I::identifySupplyWriteBufIs,
       &I::identifySupplyWriteBufDel, 2, 2},
      {&I::checkSupplyWriteBuf, &I::newCheckSupplyWriteBuf, &I::checkSupplyWriteBufIs,
       &I::checkSupplyWriteBufDel, 2, 2},
      {&I::pollForInsertionReadBuf, &I::newPollForInsertionReadBuf, &I::pollForInsertionReadBufIs,
       &I::pollForInsertionReadBufDel, 17, 0},
      {&I::identifySupplyReadBuf, &I::newIdentifySupplyReadBuf, &I::identifySupplyReadBufIs,
       &I::identifySupplyReadBufDel, 17, 0},
      {&I::checkSupplyReadBuf, &I::newCheckSupplyReadBuf, &I::checkSupplyReadBufIs,
       &I::checkSupplyReadBufDel, 17, 0},
  };
  Slot slot;
  Identifier& identifier = *slot.identifier;
  std::set<Hal::Buf*> distinct;
  for (auto const& row : rows) {
    BufPtr const first = (identifier.*row.buf)();
    distinct.insert(first.ptr());
    EXPECT_EQ(first->size(), row.size);
    EXPECT_EQ(first->len(), row.newLength);
    for (Kex::U32 const size : {0U, 1U, 40U}) {
      EXPECT_EQ((identifier.*row.make)(size)->len(), row.newLength);
    }
    EXPECT_EQ((identifier.*row.buf)(), first);
    EXPECT_EQ((identifier.*row.is)(9), first);
    EXPECT_EQ(first->size(), 9U);
    EXPECT_EQ((identifier.*row.del)(), first);
    EXPECT_FALSE((identifier.*row.buf)());
    EXPECT_FALSE((identifier.*row.del)());
    BufPtr const second = (identifier.*row.is)(5);
    EXPECT_NE(second, first);
    EXPECT_EQ((identifier.*row.buf)(), second);
    EXPECT_EQ(second->size(), 5U);
    EXPECT_EQ(second->len(), row.newLength);
  }
  EXPECT_EQ(distinct.size(), std::size(rows));
}

TEST(PmbusIdentifier, movesOnFromTheInitialStateOnly) {
  Slot slot;
  auto& identifier = *slot.identifier;
  struct {
    char const* what;
    std::function<void()> work;
    Lines log;
  } const rows[] = {
      {"the value that it has", [&] { identifier.constructedIs(true); }, {}},
      {"not constructed", [&] { identifier.derivedConstructedIs(false); }, {}},
      {"not constructed twice", [&] { identifier.constructedIs(false); }, {}},
      {"constructed in another state", [&] { identifier.derivedConstructedIs(true); }, {}},
      {"handled in another state", [&] { identifier.handleConstructed(); }, {}},
      {"initial", [&] { identifier.stateIs(Identifier::kInitial); }, {"state=0"}},
      {"handled in the initial state", [&] { identifier.handleConstructed(); }, {"state=1"}},
  };
  for (auto const& row : rows) {
    slot.log.clear();
    row.work();
    EXPECT_EQ(slot.log, row.log) << row.what;
    EXPECT_EQ(identifier.constructed(), identifier.derivedConstructed()) << row.what;
  }
  identifier.constructedIs(false);
  identifier.doInitialize();
  EXPECT_FALSE(identifier.initialized() || identifier.idprom());
  EXPECT_EQ(slot.run().timeline(), "");
}

TEST(PmbusIdentifier, startsOverWhenItIsReset) {
  Slot slot("....");
  slot.run(0.1);
  slot.log.clear();
  slot.identifier->doResetIdentifier();
  EXPECT_EQ(slot.log,
            (Lines{"3 PowerSupplySlot S: Identifier::doResetIdentifier() S", "> 58:99 r8"}));
  EXPECT_EQ(slot.identifier->mfrId(), "");
  Kex::activityManager().runUntil(Slot::clock()->time());
  EXPECT_EQ(slot.timeline(), "2P0 2P0.1");
}

TEST(PmbusFactory, givesADriverAFreshIdentifierEachTime) {
  Slot slot;
  auto const& driver = slot.driver;
  auto const factory = Emerson::PmbusIdentifier::identifierFactoryFactory("factory");
  EXPECT_EQ(factory->name(), "factory");
  auto const cell = Kex::make<Hardware::PowerSupply::CellConfig>("cell");
  Lines started;
  slot.bus->onStart = [&](std::string const& transaction) { started.push_back(transaction); };
  Kex::Ptr<PowerSupplyDetector::IdentifierBase> before;
  for (auto const& cellConfig : {cell, Kex::Ptr<Hardware::PowerSupply::CellConfig>()}) {
    factory->doAddIdentifierToDriver(driver, slot.config, cellConfig, slot.status);
    ASSERT_EQ(driver->memberNames().size(), 1U);
    auto const held = driver->identifier("EmersonPmbus");
    auto const identifier = Kex::dynamicCast<Identifier>(held);
    ASSERT_TRUE(identifier && held != before);
    std::set<Hardware::VornRequest*> const requests{identifier->pollForInsertionRequest().ptr(),
                                                    identifier->identifySupplyRequest().ptr(),
                                                    identifier->checkSupplyRequest().ptr()};
    EXPECT_EQ(requests.size(), 3U);
    EXPECT_EQ(identifier->vornAddr().device(), 0x58);
    EXPECT_EQ(identifier->vornAddr().offset(), 0xB0);
    EXPECT_TRUE(identifier->initialized() && identifier->hasNotificationActive());
    EXPECT_EQ(identifier->config(), slot.config);
    EXPECT_EQ(identifier->status(), slot.status);
    EXPECT_EQ(identifier->clockInput(), Slot::clock());
    EXPECT_FALSE(identifier->presentIntCtrl() || identifier->presentIntFd() ||
                 identifier->presentGpo());
    before = held;
  }
  // The first one's poll is still on the wire; it is the second one's that waits.
  EXPECT_EQ(started, Lines{"58:99 r8"});

  EXPECT_EQ(thrownBy([&] {
              factory->doAddIdentifierToDriver(
                  driver, Kex::make<Hardware::PowerSupplySlot::SlotConfig>("bare", nullptr), cell,
                  slot.status);
            }),
            "null ValidPtr");
  EXPECT_EQ(driver->identifier("EmersonPmbus"), before);
  EXPECT_TRUE(before->hasNotificationActive());
}

}  // namespace
