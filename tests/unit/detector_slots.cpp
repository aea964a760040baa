// What holds the identifiers of a slot: none is left running, none is hurt by what comes late.
#include <array>

#include "host/kex/base/Exception.h"
#include "host/kex/type/KexType.h"
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Slot;

/// A descriptor of a type of its own, which leaves the registry while it is asked, if it is to.
template <int number>
class Typed final : public Ipmi::SupportedPowerSupplyDescriptorBase {
 public:
  Typed(char const* part, bool isLeaving)
      : SupportedPowerSupplyDescriptorBase(kName), part_(part), isLeaving_(isLeaving) {}
  static constexpr char kName[] = {'T', '0' + number, '\0'};
  static Kex::KexType& _fwkType() {
    static Kex::KexType& record = Kex::newHostType<Typed>(kName, nullptr);
    return record;
  }
  Kex::KexType& fwkType() const override { return _fwkType(); }
  void doGenerateFdl(Kex::Ptr<Ipmi::IdpromContents> const& idprom) override {
    managedIs(idprom->productInfo()->partNumber() == part_);
    fdlIs(managed() ? Kex::String8(part_) : Kex::String8());
    if (isLeaving_) {
      Slot::registry().powerSupplyDescriptorDel(name());
    }
  }

 private:
  char const* part_;
  bool isLeaving_;
};

TEST(DetectorSlots, letDescriptorsGo) {
  auto const descriptor = Kex::make<busTest::StubDescriptor>("stub", "P");
  Slot::registry().powerSupplyDescriptorIs(descriptor);
  EXPECT_EQ(descriptor->parent(), &Slot::registry());
  EXPECT_EQ(Slot::registry().powerSupplyDescriptorDel("stub"), descriptor);
  EXPECT_EQ(descriptor->parent(), nullptr);
}

TEST(DetectorSlots, nameTheDescriptorThatGaveTheFdl) {
  struct {
    char const* what;
    std::array<char const*, 2> parts;  ///< of the descriptors in the order of the walk
    std::array<bool, 2> isLeaving;
    bool isManagedBefore;  ///< both managed a supply in another slot
    char const* descriptor;
  } const rows[] = {
      {"the first", {"P", "P"}, {false, false}, false, "T1"},
      {"the second", {"Q", "P"}, {false, false}, false, "T0"},
      {"what is left over", {"P", "Q"}, {false, false}, true, "T1"},
      {"one that leaves, and what is left over", {"P", "Q"}, {true, false}, true, "T1"},
      {"behind one that leaves", {"Q", "P"}, {true, false}, true, "T0"},
  };
  for (auto const& row : rows) {
    Slot slot(".....");
    auto const first = Kex::make<Typed<1>>(row.parts[0], row.isLeaving[0]);
    auto const second = Kex::make<Typed<0>>(row.parts[1], row.isLeaving[1]);
    Slot::registry().powerSupplyDescriptorIs(first);
    Slot::registry().powerSupplyDescriptorIs(second);
    ASSERT_EQ(Slot::registry().memberNames().front(), first->name());
    first->managedIs(row.isManagedBefore);
    second->managedIs(row.isManagedBefore);
    EXPECT_EQ(slot.run(0.5).supply().descriptor, Kex::String8(row.descriptor)) << row.what;
  }
}

/// Writes an FDL, though it manages nothing.
struct Meddling final : Ipmi::SupportedPowerSupplyDescriptorBase {
  explicit Meddling(Slot& slot) : SupportedPowerSupplyDescriptorBase("meddling"), slot_(slot) {}
  void doGenerateFdl(Kex::Ptr<Ipmi::IdpromContents> const&) override {
    slot_.identifier->fdlIs("mine");
    // Somebody else's walk stands at a descriptor that manages something else.
    Slot::registry().powerSupplyDescriptorIterator();
  }
  Slot& slot_;
};

TEST(DetectorSlots, nameNoDescriptorThatWasNotAsked) {
  Slot slot(".....");
  Slot::registry().powerSupplyDescriptorIs(Kex::make<Meddling>(slot));
  slot.run(0.6);
  EXPECT_EQ(slot.supply().fdl, "mine");
  EXPECT_EQ(slot.supply().descriptor, std::nullopt);
}

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
  Slot slot(".....0");
  slot.run(1.2);
  EXPECT_EQ(slot.log,
            "3 PowerSupplySlot S: Identifier::handleCheckSupplyRequest(succeeded); failCount=0; "
            "4 S: incomplete read by checkSupplyRequest: 0 < 2; fdl=; serialNum=; "
            "hwError=false; state=pollForInsertion; "
            "3 PowerSupplySlot S: Identifier::doResetIdentifier() S; > 58:99<>8");
  EXPECT_FALSE(slot.identifier->idprom()->productInfo() || slot.identifier->idprom()->header());
}

TEST(DetectorSlots, bearAnExceptionOfTheirOwn) {
  Slot slot("*");
  Slot::descriptorIs("stub", "P");
  slot.run(0.5);
  slot.identifier->pollForInsertionRequestDel();
  slot.identifier->identifySupplyRequestDel();
  slot.run(3.5);
  EXPECT_EQ(slot.supply().reason, "range exception: null ValidPtr");
  slot.identifier->pollForInsertionRequestIs(slot.vorn->newRequest());
  slot.run(4.5);
  slot.identifier->identifySupplyRequestIs(slot.vorn->newRequest());
  slot.run(6);
  EXPECT_EQ(slot.timeline,
            "P0 P0 I0.2 I0.2 C0.2 identified unreadable unreadable P4 P4 unreadable P5 P5 I5.2 "
            "I5.2 C5.2 identified");
}

}  // namespace
