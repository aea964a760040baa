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
  EXPECT_FALSE(identifier.initialized());
  EXPECT_EQ(identifier.deviceId().value(), 0x58);
  EXPECT_EQ(identifier.fruInfoCommand(), 0xB0);
  EXPECT_EQ(identifier.fruInfoAddr(), 0U);
  EXPECT_EQ(identifier.mfrIdAddr().encoded(), 0U);
  EXPECT_EQ(identifier.mfrId(), "");
  EXPECT_EQ(identifier.mfrIdSupportedTable().size(), 2U);
  EXPECT_EQ(identifier.commonAreaBuf()->len(), 8U);
  EXPECT_EQ(identifier.productInfoHeaderBuf()->len(), 2U);
  EXPECT_FALSE(identifier.productInfoBuf());
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

TEST(PmbusIdentifier, asksForTheLongestMfrIdOfItsTable) {
  using Edit = void (*)(Identifier&);
  struct {
    Edit edit;
    Kex::U32 entries;
    char const* operation;
  } const rows[] = {
      {[](Identifier&) {}, 2, "> 58:99 r8"},
      {[](Identifier& it) { it.mfrIdSupportedIs("ABC", false); }, 3, "> 58:99 r8"},
      {[](Identifier& it) { it.mfrIdSupportedIs("ELEVEN BYTE", false); }, 3, "> 58:99 r12"},
      {[](Identifier& it) { it.mfrIdSupportedIs("SIXTEEN BYTES---", true); }, 3, "> 58:99 r17"},
      {[](Identifier& it) { it.mfrIdSupportedIs("TWENTY BYTES--------", true); }, 3, "> 58:99 r17"},
      {[](Identifier& it) { it.mfrIdSupportedIs("EMERSON", false); }, 2, "> 58:99 r8"},
      {[](Identifier& it) { it.mfrIdSupportedDelAll(); }, 0, "> 58:99 r1"},
      {[](Identifier& it) {
         it.mfrIdSupportedDel("EMERSON");
         it.mfrIdSupportedIs("ACME", true);
         it.mfrIdSupportedDel("ARTESYN");
         it.mfrIdSupportedDel("ARTESYN");
       },
       1, "> 58:99 r5"},
      {[](Identifier& it) {
         it.mfrIdSupportedIs("X", true);
         for (Identifier::MfrIdSupportedIterator walk(it); walk; ++walk) {
           if (walk->key() != "X") {
             it.mfrIdSupportedDel(walk);
           }
         }
       },
       1, "> 58:99 r2"},
  };
  for (auto const& row : rows) {
    Slot slot;
    row.edit(*slot.identifier);
    EXPECT_EQ(slot.identifier->mfrIdSupportedTable().size(), row.entries) << row.operation;
    slot.run();
    EXPECT_EQ(slot.log.back(), row.operation);
  }
}

TEST(PmbusIdentifier, acceptsWhatItsTableAccepts) {
  struct {
    char const* key;
    bool value;
    char const* answered;
    char const* timeline;
  } const rows[] = {
      {"ELEVEN BYTE", true, "ELEVEN BYTE", "2P0"},
      {"ELEVEN BYTE", false, "ELEVEN BYTE", "P0 unsupportedManufacturer"},
      // The read grew with the table, so the others are followed by NULs.
      {"ELEVEN BYTE", true, "EMERSON", "P0 unsupportedManufacturer"},
      {"EMERSON", false, "EMERSON", "P0 unsupportedManufacturer"},
      {"SIXTEEN BYTES---", true, "SIXTEEN BYTES---", "2P0"},
      {"TWENTY BYTES--------", true, "TWENTY BYTES--------", "P0 unsupportedManufacturer"},
  };
  for (auto const& row : rows) {
    Slot slot(".", {}, row.answered);
    slot.identifier->mfrIdSupportedIs(row.key, row.value);
    EXPECT_EQ(slot.identifier->mfrIdSupported(row.key), row.value);
    EXPECT_EQ(slot.run().timeline(), row.timeline()) << row.key;
  }
  Slot empty(".");
  empty.identifier->mfrIdSupportedDelAll();
  EXPECT_FALSE(empty.identifier->mfrIdSupported("EMERSON"));
  EXPECT_EQ(empty.run().timeline(), "P0 unsupportedManufacturer");
  EXPECT_EQ(empty.supply().mfrId, Kex::String8(""));
}

TEST(PmbusIdentifier, keepsItsBuffers) {
  using BufPtr = Kex::Ptr<Hal::Buf>;
  struct {
    BufPtr const& (Identifier::*buf)() const;
    BufPtr (Identifier::*make)(Kex::U32) const;
    BufPtr (Identifier::*is)(Kex::U32);
    BufPtr (Identifier::*del)();
    Kex::U32 size;
    Kex::U32 newLength;
  } const rows[] = {
      {&Identifier::pollForInsertionWriteBuf, &Identifier::newPollForInsertionWriteBuf,
       &Identifier::pollForInsertionWriteBufIs, &Identifier::pollForInsertionWriteBufDel, 2, 2},
      {&Identifier::identifySupplyWriteBuf, &Identifier::newIdentifySupplyWriteBuf,
       &Identifier::identifySupplyWriteBufIs, &Identifier::identifySupplyWriteBufDel, 2, 2},
      {&Identifier::checkSupplyWriteBuf, &Identifier::newCheckSupplyWriteBuf,
       &Identifier::checkSupplyWriteBufIs, &Identifier::checkSupplyWriteBufDel, 2, 2},
      {&Identifier::pollForInsertionReadBuf, &Identifier::newPollForInsertionReadBuf,
       &Identifier::pollForInsertionReadBufIs, &Identifier::pollForInsertionReadBufDel, 17, 0},
      {&Identifier::identifySupplyReadBuf, &Identifier::newIdentifySupplyReadBuf,
       &Identifier::identifySupplyReadBufIs, &Identifier::identifySupplyReadBufDel, 17, 0},
      {&Identifier::checkSupplyReadBuf, &Identifier::newCheckSupplyReadBuf,
       &Identifier::checkSupplyReadBufIs, &Identifier::checkSupplyReadBufDel, 17, 0},
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
  slot.bus->script.clear();
}

TEST(PmbusFactory, givesADriverAFreshIdentifierEachTime) {
  Slot const unused;
  auto const factory = Emerson::PmbusIdentifier::identifierFactoryFactory("factory");
  EXPECT_EQ(factory->name(), "factory");
  auto const driver = Kex::make<PowerSupplyDetector::SlotDriver>("driver");
  auto const cell = Kex::make<Hardware::PowerSupply::CellConfig>("cell");
  auto* const bus = new busTest::ScriptedBus;
  auto const vorn =
      Kex::make<Hardware::Vorn>(Kex::make<Smbus::Bus>(std::unique_ptr<Smbus::Transport>(bus)));
  auto const config =
      Kex::make<Hardware::PowerSupplySlot::SlotConfig>("S", Kex::make<SmbusVorn::VornDesc>(vorn));
  Lines started;
  bus->onStart = [&](std::string const& transaction) { started.push_back(transaction); };
  Kex::Ptr<PowerSupplyDetector::IdentifierBase> before;
  for (auto const& cellConfig : {cell, Kex::Ptr<Hardware::PowerSupply::CellConfig>()}) {
    factory->doAddIdentifierToDriver(driver, config, cellConfig, unused.status);
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
    EXPECT_EQ(identifier->config(), config);
    EXPECT_EQ(identifier->status(), unused.status);
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
                  unused.status);
            }),
            "null ValidPtr");
  EXPECT_EQ(driver->identifier("EmersonPmbus"), before);
  EXPECT_TRUE(before->hasNotificationActive());
}

}  // namespace
