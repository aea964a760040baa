// Requests through the generic interface: every operation code against every kind of attribute.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <span>
#include <string>
#include <tuple>
#include <typeinfo>
#include <vector>

#include "host/kex/Directory.h"
#include "pmbus/Identifier.h"
#include "pmbus/IdentifierFactory.h"
#include "tests/unit/ipmi_support.h"

namespace {

using DescriptorBase = Ipmi::SupportedPowerSupplyDescriptorBase;
using FactoryBase = PowerSupplyDetector::IdentifierFactoryBase;
using Emerson::PmbusIdentifier::Identifier;
using Emerson::PmbusIdentifier::IdentifierFactory;
using Hardware::PowerSupplySlot::SlotConfig;
using Kex::holderOf;
using Kex::KexType;
using Kex::Ptr;
using Kex::String8;
using Kex::U32;
using Kex::U8;
using Value = Ptr<Kex::GenericIf>;

/// What came of something: "= " and the answer's text, "done" without an answer, or the class of
/// the exception and its text.
std::string outcome(std::function<Value()> const& run) {
  // Class, its identifier, and what it is called here.
  static std::tuple<std::type_info const&, U32, char const*> const kClasses[] = {
      {typeid(Kex::RangeException), 1, "range: "},
      {typeid(Kex::TypeException), 2, "type: "},
      {typeid(Kex::ConstException), 3, "const: "},
      {typeid(Kex::OpNotSupportedException), 4, "not supported: "},
      {typeid(Kex::UnknownArgException), 5, "unknown: "},
      {typeid(Kex::BadIndexAttrException), 6, "index: "},
      {typeid(Kex::Exception), 12, "conversion: "},
  };
  try {
    Value const answer = run();
    return answer ? std::string("= ") + answer->text().charPtr() : "done";
  } catch (Kex::Exception const& error) {
    for (auto const& [type, id, name] : kClasses) {
      if (type == typeid(error) && id == error.id()) {
        return name + std::string(error.what());
      }
    }
    return std::string("another class: ") + error.what();
  }
}

Value listOf(std::vector<Value> const& elements) {
  auto list = Kex::make<Kex::GenericIf::List_>();
  std::ranges::for_each(elements, [&](auto const& element) { list->append(element); });
  return list;
}

struct SilentTransport final : Smbus::Transport {
  void start(Smbus::Transaction const&, Kex::U64, Smbus::AnswerSink&) override {}
};

/// A slot with an identifier that waits for the answer to its first poll.
struct Slot {
  Ptr<Smbus::Bus> bus = Kex::make<Smbus::Bus>(std::make_unique<SilentTransport>());
  Ptr<SlotConfig> config =
      Kex::make<SlotConfig>("slot", Kex::make<SmbusVorn::VornDesc>(Kex::make<Hardware::Vorn>(bus)));
  Ptr<Hardware::PowerSupplySlot::SlotStatus> status =
      Kex::make<Hardware::PowerSupplySlot::SlotStatus>("status");
  Ptr<PowerSupplyDetector::SlotDriver> driver =
      Kex::make<PowerSupplyDetector::SlotDriver>("driver");
  Ptr<IdentifierFactory> factory = Emerson::PmbusIdentifier::identifierFactoryFactory("factory");
  Ptr<Identifier> identifier = [this] {
    factory->doAddIdentifierToDriver(driver, config, nullptr, status);
    return Kex::dynamicCast<Identifier>(driver->identifier("EmersonPmbus"));
  }();
};

enum class Kind { function, fixed, written, buffer, table };

/// What a request with neither index nor value is answered; "=" stands for any answer.
std::string expected(Kind kind, std::string const& name, unsigned code, bool isConst) {
  if (isConst && code >= 128) {
    return "const: attempting to modify a const instance";
  }
  bool const isWrite = code == 128;
  std::string const noList = "type: Kex::GenericIf::List_";
  std::string const notSupported = "not supported: " + name;
  switch (kind) {
    case Kind::function: return code == 0 ? noList : notSupported;
    case Kind::fixed: return code == 0 ? "=" : notSupported;
    case Kind::written: return code == 0 ? "=" : isWrite ? "type: " + name : notSupported;
    case Kind::buffer: return code == 0 || code == 129 ? "=" : isWrite ? noList : notSupported;
    case Kind::table: break;
  }
  return code == 0 || isWrite || code == 129 ? "type: kex_index"
         : code == 1 || code == 2            ? "= 2"
                                             : notSupported;
}

TEST(IntrospectionAccess, everyCodeAtEveryKindOfAttribute) {
  struct {
    Kind kind;
    std::vector<std::pair<Kex::AttributeId, char const*>> attributes;
  } const groups[] = {
      {Kind::function,
       {{0x11b, "doInitialize"},
        {0x11d, "handlePollForInsertionRequest"},
        {0x11e, "handleIdentifySupplyRequest"},
        {0x11f, "handleCheckSupplyRequest"},
        {0x120, "doResetIdentifier"},
        {0x216, "doSetupCheckSupplyRequest"},
        {0x218, "handleConstructed"}}},
      {Kind::fixed,
       {{0x206, "clockInput"},
        {0x208, "deviceId"},
        {0x209, "fruInfoCommand"},
        {0x20c, "maxBytesReadInProcessCall"}}},
      {Kind::written,
       {{0x207, "notifier"},
        {0x20a, "vornAddr"},
        {0x20b, "fruInfoAddr"},
        {0x20d, "mfrIdAddr"},
        {0x20e, "mfrId"},
        {0x217, "derivedConstructed"}}},
      {Kind::buffer,
       {{0x210, "pollForInsertionWriteBuf"},
        {0x211, "identifySupplyWriteBuf"},
        {0x212, "checkSupplyWriteBuf"},
        {0x213, "pollForInsertionReadBuf"},
        {0x214, "identifySupplyReadBuf"},
        {0x215, "checkSupplyReadBuf"}}},
      {Kind::table, {{0x20f, "mfrIdSupported"}}},
  };
  Value const index = holderOf(U8{1});
  for (unsigned n = 0; n < 512; ++n) {
    U8 const code = n & 0xff;
    bool const isConst = n > 0xff;
    Slot const slot;
    Value const adapter = KexType::genericIf(slot.identifier, isConst);
    auto const ask = [&](Kex::AttributeId id, Kex::GenericIf const* at) {
      return outcome(
          [&] { return adapter->access({.id = id, .code = code, .index = at, .value = nullptr}); });
    };
    for (auto const& [kind, attributes] : groups) {
      for (auto const& [id, name] : attributes) {
        auto const plain = expected(kind, name, code, isConst);
        auto const answer = ask(id, nullptr);
        EXPECT_EQ(plain == "=" ? answer.substr(0, 1) : answer, plain) << name << n;
        if (kind != Kind::function && kind != Kind::table && !plain.starts_with("const")) {
          EXPECT_EQ(ask(id, index.ptr()), std::string("index: ") + name) << n;
        }
      }
    }
    // What the type does not declare itself is its base's to answer, or nobody's.
    EXPECT_EQ(ask(0x104, nullptr),
              code == 0 ? "= 2" : expected(Kind::fixed, "state", code, isConst));
    for (Kex::AttributeId const id : {0x0U, 0x11cU, 0x205U, 0x219U, 0xffffffffU}) {
      EXPECT_EQ(ask(id, nullptr).substr(0, 6), isConst && code >= 128 ? "const:" : "range:") << id;
    }
  }
}

struct Request {
  Kex::AttributeId id;
  unsigned code;
  Value value;
  std::string outcome;
  Value index = {};
};
void expectEach(Value const& adapter, std::vector<Request> const& rows) {
  for (auto const& row : rows) {
    Kex::AttributeRequest const request{.id = row.id,
                                        .code = static_cast<U8>(row.code),
                                        .index = row.index.ptr(),
                                        .value = row.value.ptr()};
    EXPECT_EQ(outcome([&] { return adapter->access(request); }), row.outcome)
        << std::hex << row.id << ", row " << std::dec << &row - rows.data();
  }
}

TEST(IntrospectionAccess, readsAndWritesWhatFits) {
  Slot const slot;
  Value const text = holderOf(String8("x"));
  Value const key = holderOf(String8("EMERSON"));
  Value const none = nullptr;
  auto const address = [](Kex::U64 encoded) { return holderOf(Smbus::VornAddress(encoded)); };
  slot.identifier->idprom()->headerIs(Kex::make<Ipmi::CommonAreaHeader>(*Kex::make<Hal::Buf>(0U)));
  expectEach(KexType::genericIf(slot.identifier, false),
             {
                 {0x206, 0, none, "= clock"},
                 {0x207, 128, holderOf(Kex::make<Kex::Clock>("another")), "done"},
                 {0x207, 0, none, "= another"},
                 {0x207, 128, holderOf(slot.config), "type: notifier"},
                 {0x208, 0, none, "= 0x58"},
                 {0x209, 0, none, "= 176"},
                 {0x20a, 0, none, "= 0x3e8b058"},
                 {0x20b, 0, none, "= 65581144"},
                 {0x20c, 0, none, "= 16"},
                 {0x20d, 0, none, "= 0x3e89958"},
                 {0x20a, 128, text, "type: vornAddr"},
                 {0x20a, 128, address(0x12), "done"},
                 {0x20b, 0, none, "= 18"},
                 {0x20b, 128, holderOf(true), "type: fruInfoAddr"},
                 {0x20b, 128, holderOf(Kex::U64{0x34}), "done"},
                 {0x20a, 0, none, "= 0x34"},
                 {0x20e, 128, text, "done"},
                 {0x20e, 0, none, "= x"},
                 {0x217, 128, holderOf(U8{0}), "type: derivedConstructed"},
                 {0x217, 128, holderOf(false), "done"},
                 {0x10b, 0, none, "= false"},
                 // Buffers
                 {0x213, 129, none, "= <Hal::Buf>"},
                 {0x213, 129, none, "done"},
                 {0x213, 128, listOf({}), "type: size"},
                 {0x213, 128, listOf({text}), "type: size"},
                 {0x213, 128, listOf({holderOf(Kex::U64{1} << 32)}), "type: size"},
                 {0x213, 128, listOf({holderOf(U32{9}), none}), "unknown: pollForInsertionReadBuf"},
                 {0x213, 0, none, "done"},
                 {0x213, 128, listOf({holderOf(U32{9})}), "= <Hal::Buf>"},
                 // The table of manufacturers
                 {0x20f, 0, none, "= true", key},
                 {0x20f, 0, none, "= false", text},
                 {0x20f, 0, none, "type: kex_index", holderOf(U8{1})},
                 {0x20f, 128, none, "type: mfrIdSupported", key},
                 {0x20f, 128, holderOf(false), "done", key},
                 {0x20f, 0, none, "= false", key},
                 {0x20f, 128, holderOf(true), "done", text},
                 {0x20f, 1, none, "= 3"},
                 {0x20f, 129, none, "done", text},
                 {0x20f, 129, none, "done", text},
                 {0x20f, 1, none, "= 2"},
                 // Functions
                 {0x11b, 0, text, "type: Kex::GenericIf::List_"},
                 {0x11b, 0, listOf({text}), "unknown: doInitialize"},
                 {0x120, 0, listOf({}), "done"},
                 {0x20e, 0, none, "= "},
                 {0x216, 0, listOf({}), "type: supported"},
                 {0x216, 0, listOf({holderOf(true), none}), "unknown: doSetupCheckSupplyRequest"},
                 {0x216, 0, listOf({holderOf(true)}), "done"},
             });
  EXPECT_EQ(slot.identifier->pollForInsertionReadBuf()->size(), 9U);
  EXPECT_EQ(slot.identifier->checkSupplyRequest()->operations().size(), 2U);
}

TEST(IntrospectionAccess, walksTheTableOfManufacturers) {
  Slot const slot;
  Value const adapter = KexType::genericIf(slot.identifier, true);
  slot.identifier->mfrIdSupportedIs("ARTESYN", false);
  std::string met;
  for (auto const walk = adapter->iterator(0x20f); !walk->isAtEnd(); walk->advance()) {
    slot.identifier->mfrIdSupportedDel(walk->key()->text());
    met = met + walk->key()->text().charPtr() + walk->value()->text().charPtr();
  }
  EXPECT_TRUE(met == "ARTESYNfalseEMERSONtrue" || met == "EMERSONtrueARTESYNfalse") << met;
  EXPECT_EQ(outcome([&] { return adapter->iterator(0x208)->key(); }).substr(0, 6), "range:");
}

TEST(IntrospectionAccess, functionsTakeTheirDeclaredArguments) {
  auto const descriptor = Emerson::IpmiIdentifier::dS2900Factory("d");
  Value const good = holderOf(ipmiTest::idpromOf({.partNumber = "DS2900-3"}));
  Value const empty = holderOf(Kex::make<Ipmi::IdpromContents>());
  Value const noIdprom = holderOf(Ptr<Ipmi::IdpromContents>());
  Value const noConfig = holderOf(Ptr<SlotConfig>());
  expectEach(KexType::genericIf(descriptor, true),
             {{0x102, 0, listOf({}), "type: idpromContents"},
              {0x102, 0, listOf({nullptr}), "type: idpromContents"},
              {0x102, 0, listOf({holderOf(descriptor)}), "type: idpromContents"},
              {0x102, 0, listOf({noConfig}), "type: idpromContents"},
              {0x102, 0, listOf({noIdprom}), "range: null ValidPtr"},
              {0x102, 0, listOf({empty}), "range: null ValidPtr"},
              {0x102, 0, listOf({good, good}), "unknown: doGenerateFdl"},
              {0x100, 0, nullptr, "= false"},
              {0x102, 0, listOf({good}), "done"},
              {0x100, 0, nullptr, "= true"},
              {0x102, 1, listOf({good}), "not supported: doGenerateFdl"},
              {0x102, 129, nullptr, "const: attempting to modify a const instance"}});
  Slot const slot;
  slot.driver->identifierDel("EmersonPmbus");
  Value const factory = KexType::genericIf(slot.factory, false);
  Value const driver = KexType::genericIf(slot.driver, true);
  Value const config = KexType::genericIf(slot.config, true);
  Value const cell = holderOf(Ptr<Hardware::PowerSupply::CellConfig>());
  Value const status = holderOf(slot.status);
  Value const noStatus = holderOf(Ptr<Hardware::PowerSupplySlot::SlotStatus>());
  Value const noDriver = holderOf(Ptr<PowerSupplyDetector::SlotDriver>());
  expectEach(factory, {{0x102, 0, listOf({}), "type: driver"},
                       {0x102, 0, listOf({driver}), "type: config"},
                       {0x102, 0, listOf({driver, config}), "type: cellConfig"},
                       {0x102, 0, listOf({driver, config, cell}), "type: status"},
                       {0x102, 0, listOf({driver, noConfig, cell, status}), "range: null ValidPtr"},
                       {0x102, 0, listOf({noDriver, config, cell, status}), "range: null ValidPtr"},
                       {0x102, 0, listOf({driver, config, cell, noStatus}), "range: null ValidPtr"},
                       {0x102, 0, listOf({driver, config, cell, status, cell}),
                        "unknown: doAddIdentifierToDriver"}});
  EXPECT_EQ(slot.driver->identifier("EmersonPmbus"), nullptr);
  expectEach(factory, {{0x102, 0, listOf({driver, config, cell, status}), "done"}});
  EXPECT_NE(slot.driver->identifier("EmersonPmbus"), nullptr);
}

TEST(IntrospectionTypes, areConstructedCastAndReadAsTheirChainSays) {
  Slot const slot;
  KexType* const identifierChain[] = {
      &Ipmi::IdentifierBase::_fwkType(), &PowerSupplyDetector::IdentifierBase::_fwkType(),
      &Kex::Entity::NotifieeConst::_fwkType(), &Kex::PtrInterface::NotifieeConst::_fwkType()};
  KexType* const factoryChain[] = {&FactoryBase::_fwkType(), &Kex::Entity::_fwkType()};
  KexType* const descriptorChain[] = {&DescriptorBase::_fwkType(), &Kex::Entity::_fwkType()};
  std::vector<std::pair<Ptr<Kex::PtrInterface>, std::span<KexType* const>>> objects{
      {slot.identifier, identifierChain}, {slot.factory, factoryChain}};
  for (auto const& descriptor : ipmiTest::oneOfEach()) {
    objects.emplace_back(descriptor, descriptorChain);
  }
  std::vector<KexType*> types{&Kex::PtrInterface::_fwkType(), &Kex::Clock::_fwkType()};
  for (auto const& [object, chain] : objects) {
    types.push_back(&object->fwkType());
    std::ranges::copy(chain, std::back_inserter(types));
  }
  Value const name = holderOf(Kex::Name("n"));
  for (auto const& [object, chain] : objects) {
    KexType const& own = object->fwkType();
    std::string const shortName = own.name().charPtr();
    Value const adapter = KexType::genericIf(object, true);
    for (KexType const* const type : types) {
      bool const isGranted =
          type == &own || type == types[0] || std::ranges::find(chain, type) != chain.end();
      EXPECT_EQ(outcome([&] { return holderOf(adapter->castTo(*type)); }),
                isGranted ? "= " + std::string(Kex::valueToStrep(object).charPtr())
                          : "type: " + shortName)
          << type->fullName();
      EXPECT_EQ(type->valueFromPtr(object.ptr())->object(), isGranted ? object : nullptr);
      EXPECT_EQ(type->valueFromPtr(nullptr)->object(), nullptr);
    }
    struct {
      Value arguments;
      std::string outcome;
    } const rows[] = {
        {nullptr, "type: Kex::GenericIf::List_"},
        {name, "type: Kex::GenericIf::List_"},
        {listOf({}), "type: name"},
        {listOf({nullptr}), "type: name"},
        {listOf({listOf({})}), "type: name"},
        {listOf({name, name}), "unknown: " + shortName},
        {listOf({name, {}}), "unknown: " + shortName},
        {listOf({name}), "= n"},
    };
    for (auto const& row : rows) {
      EXPECT_EQ(outcome([&] { return own.genericIf(row.arguments.ptr(), true); }),
                object == slot.identifier ? "type: " + shortName : row.outcome);
    }
    EXPECT_EQ(outcome([&] { return own.valueFromText("null"); }), "= null");
    EXPECT_EQ(outcome([&] { return own.valueFromText("/ "); }),
              "conversion: cannot convert '/' to " + std::string(own.fullName().charPtr()));
  }
  Kex::root().memberIs(slot.driver);
  KexType const& type = Identifier::_fwkType();
  EXPECT_EQ(outcome([&] { return type.valueFromText("/driver/EmersonPmbus"); }),
            "= /driver/EmersonPmbus");
  EXPECT_EQ(outcome([&] { return type.valueFromText("/driver/EmersonPmbus]"); }),
            "conversion: junk at column 20 deserializing /driver/EmersonPmbus]");
  Kex::root().memberDel("driver");
}

}  // namespace
