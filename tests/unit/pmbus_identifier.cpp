// The identifier's own attributes and operations, and the factory that gives slots their
// identifiers.
#include <gmock/gmock.h>

#include <set>

#include "pmbus/IdentifierFactory.h"
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Slot;
using Emerson::PmbusIdentifier::Identifier;
using testing::ThrowsMessage;

TEST(PmbusIdentifier, takesDeviceAddressesOfSevenBits) {
  for (Kex::U8 const deviceId : {Kex::U8{0x00}, Kex::U8{0x7F}}) {
    Slot slot("", {}, deviceId);
    slot.identifier->doInitialize();
    EXPECT_TRUE(slot.identifier->initialized());
    // Device, command, 1000 ms.
    EXPECT_EQ(slot.identifier->fruInfoAddr(), 0x3E8'B000U + deviceId);
    EXPECT_EQ(slot.identifier->mfrIdAddr().encoded(), 0x3E8'9900U + deviceId);
    EXPECT_EQ(slot.identifier->pollForInsertionRequest()->loaded(),
              Hardware::VornRequest::Loaded::read);
    EXPECT_EQ(slot.timeline, "");
  }
  Slot slot("", {}, 0x80);
  EXPECT_THAT([&] { slot.identifier->doInitialize(); },
              ThrowsMessage<Kex::RangeException>("U7::value < 0 or > 0x7f not allowed"));
  EXPECT_FALSE(slot.identifier->initialized());
  EXPECT_EQ(slot.identifier->fruInfoAddr() | slot.identifier->mfrIdAddr().encoded(), 0U);
}

TEST(PmbusIdentifier, isNotDisturbedByTracesThatCannotBeWritten) {
  for (bool const isTraced : {false, true}) {
    Slot slot("*");
    Slot::descriptorIs("A", "P");
    Kex::TraceHandle::facilityIs("EmersonPmbusIdentifier", isTraced);
    slot.identifier->configDel();  // whose name they tell
    EXPECT_EQ(slot.run(3).verdict(), "identified") << isTraced;
  }
}

/// What the first poll asks for, and its verdict.
std::string pollOf(Slot& slot) {
  std::string asked;
  slot.bus->onStart = [&](std::string const& transaction) { asked += transaction + " "; };
  slot.run();
  return asked + slot.verdict();
}

TEST(PmbusIdentifier, asksForTheLongestMfrIdAndAcceptsWhatItsTableAccepts) {
  struct {
    char const* entry;
    bool isSupported;
    char const* answered;
    char const* poll;
  } const rows[] = {
      {"EMERSON", true, "EMERSON", "58:99<>8 58:B0<0100>9 none"},
      {"EMERSON", false, "EMERSON", "58:99<>8 unsupportedManufacturer"},
      {"ELEVEN BYTE", true, "ELEVEN BYTE", "58:99<>12 58:B0<0100>9 none"},
      {"ELEVEN BYTE", false, "ELEVEN BYTE", "58:99<>12 unsupportedManufacturer"},
      // The read grew with the table, so a shorter one is followed by NULs.
      {"ELEVEN BYTE", true, "EMERSON", "58:99<>12 unsupportedManufacturer"},
      {"SIXTEEN BYTES---", true, "SIXTEEN BYTES---", "58:99<>17 58:B0<0100>9 none"},
      {"SEVENTEEN BYTES--", true, "SEVENTEEN BYTES--", "58:99<>17 unsupportedManufacturer"},
  };
  for (auto const& row : rows) {
    Slot slot(".", {.mfrId = row.answered});
    slot.identifier->mfrIdSupportedIs(row.entry, row.isSupported);
    EXPECT_EQ(pollOf(slot), row.poll) << row.entry;
  }
}

TEST(PmbusIdentifier, forgetsManufacturers) {
  Slot slot(".", {.mfrId = "ACME"});
  slot.identifier->mfrIdSupportedDel("EMERSON");
  slot.identifier->mfrIdSupportedDel("EMERSON");
  slot.identifier->mfrIdSupportedIs("ACME", true);
  for (Identifier::MfrIdSupportedIterator walk(*slot.identifier); walk; ++walk) {
    if (walk->key() != "ACME") {
      slot.identifier->mfrIdSupportedDel(walk);
    }
  }
  EXPECT_EQ(pollOf(slot), "58:99<>5 58:B0<0100>9 none");
  Slot empty(".");
  empty.identifier->mfrIdSupportedDelAll();
  EXPECT_EQ(pollOf(empty), "58:99<>1 unsupportedManufacturer");
}

TEST(PmbusIdentifier, keepsItsBuffers) {
  using I = Identifier;
  using BufPtr = Kex::Ptr<Hal::Buf>;
#define BUFFER(name, Name, size, newLength) \
  { &I::name##Buf, &I::new##Name##Buf, &I::name##BufIs, &I::name##BufDel, size, newLength }
  struct {
    BufPtr const& (I::*buf)() const;
    BufPtr (I::*make)(Kex::U32) const;
    BufPtr (I::*is)(Kex::U32);
    BufPtr (I::*del)();
    Kex::U32 size;
    Kex::U32 newLength;
  } const rows[] = {
      BUFFER(pollForInsertionWrite, PollForInsertionWrite, 2, 2),
      BUFFER(identifySupplyWrite, IdentifySupplyWrite, 2, 2),
      BUFFER(checkSupplyWrite, CheckSupplyWrite, 2, 2),
      BUFFER(pollForInsertionRead, PollForInsertionRead, 17, 0),
      BUFFER(identifySupplyRead, IdentifySupplyRead, 17, 0),
      BUFFER(checkSupplyRead, CheckSupplyRead, 17, 0),
  };
#undef BUFFER
  Slot slot;
  Identifier& identifier = *slot.identifier;
  std::set<Hal::Buf*> distinct;
  for (auto const& row : rows) {
    BufPtr const first = (identifier.*row.buf)();
    distinct.insert(first.ptr());
    EXPECT_EQ(first->size(), row.size);
    EXPECT_EQ((identifier.*row.is)(9), first);
    EXPECT_EQ(first->size(), 9U);
    EXPECT_EQ((identifier.*row.del)(), first);
    EXPECT_FALSE((identifier.*row.buf)() || (identifier.*row.del)());
    BufPtr const second = (identifier.*row.is)(5);
    EXPECT_EQ((identifier.*row.buf)(), second);
    EXPECT_EQ(second->size(), 5U);
    for (auto const& made : {second, (identifier.*row.make)(5)}) {
      EXPECT_NE(made, first);
      EXPECT_EQ(made->len(), row.newLength);
      EXPECT_EQ(made->size(), 5U);
    }
    if (row.newLength != 0) {
      (identifier.*row.del)();
      EXPECT_THROW((identifier.*row.make)(1), Kex::RangeException);
      EXPECT_THROW((identifier.*row.is)(1), Kex::RangeException);
      EXPECT_FALSE((identifier.*row.buf)());
    }
  }
  EXPECT_EQ(distinct.size(), std::size(rows));
}

TEST(PmbusIdentifier, movesOnFromTheInitialStateOnly) {
  Slot slot;
  auto& identifier = *slot.identifier;
  EXPECT_EQ(identifier.state(), Identifier::kConstructed);
  identifier.constructedIs(true);
  identifier.derivedConstructedIs(false);
  EXPECT_FALSE(identifier.constructed());
  identifier.derivedConstructedIs(true);
  EXPECT_TRUE(identifier.constructed());
  identifier.handleConstructed();
  EXPECT_EQ(slot.log, "");
  identifier.stateIs(Identifier::kInitial);
  identifier.handleConstructed();
  EXPECT_EQ(slot.log, "state=initial; state=constructed");
  identifier.constructedIs(false);
  identifier.doInitialize();
  EXPECT_FALSE(identifier.initialized() || identifier.idprom());
  EXPECT_EQ(slot.run().timeline, "");
}

TEST(PmbusFactory, givesADriverAFreshIdentifierEachTime) {
  Slot slot;
  auto const factory = Emerson::PmbusIdentifier::identifierFactoryFactory("factory");
  std::string started;
  slot.bus->onStart = [&](std::string const& transaction) { started += transaction; };
  std::set<void*> distinct;
  Kex::Ptr<Identifier> identifier;
  for (int i = 0; i < 2; ++i) {
    factory->doAddIdentifierToDriver(slot.driver, slot.config, nullptr, slot.status);
    ASSERT_EQ(slot.driver->memberNames(), std::vector<Kex::Name>{"EmersonPmbus"});
    identifier = Kex::dynamicCast<Identifier>(slot.driver->identifier("EmersonPmbus"));
    ASSERT_TRUE(identifier);
    distinct.insert({identifier->pollForInsertionRequest().ptr(),
                     identifier->identifySupplyRequest().ptr(),
                     identifier->checkSupplyRequest().ptr()});
    EXPECT_EQ(identifier->fruInfoAddr(), 0x3E8'B058U);
    EXPECT_TRUE(identifier->initialized() && identifier->hasNotificationActive());
    EXPECT_EQ(identifier->config(), slot.config);
    EXPECT_EQ(identifier->status(), slot.status);
    EXPECT_EQ(identifier->clockInput(), Slot::clock());
  }
  EXPECT_EQ(distinct.size(), 6U);
  // The first one's poll is still on the wire; it is the second one's that waits.
  EXPECT_EQ(started, "58:99<>8");

  auto const bare = Kex::make<Hardware::PowerSupplySlot::SlotConfig>("bare", nullptr);
  auto const add = [&] {
    factory->doAddIdentifierToDriver(slot.driver, bare, nullptr, slot.status);
  };
  EXPECT_THAT(add, ThrowsMessage<Kex::RangeException>("null ValidPtr"));
  EXPECT_EQ(slot.driver->identifier("EmersonPmbus"), identifier);
  EXPECT_TRUE(identifier->hasNotificationActive());
}

}  // namespace
