// Requests through the generic interface: every operation code against every kind of attribute.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <typeinfo>
#include <utility>
#include <vector>

#include "host/kex/base/Format.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/generic/TextConversion.h"
#include "pmbus/Identifier.h"
#include "pmbus/IdentifierFactory.h"
#include "tests/unit/ipmi_support.h"

namespace {

using Emerson::PmbusIdentifier::Identifier;
using Hardware::PowerSupplySlot::SlotConfig;
using Hardware::PowerSupplySlot::SlotStatus;
using Kex::holderOf;
using Kex::KexType;
using Kex::Ptr;
using Kex::String8;
using Kex::U32;
using Kex::U8;
using PowerSupplyDetector::SlotDriver;
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
    EXPECT_TRUE(error.isUserError());
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

/// A request, and what must come of it.
struct Step {
  Kex::AttributeId id;
  U8 code;
  Value value;
  std::string outcome;
  Value index = {};
};
Step read(Kex::AttributeId id, std::string outcome, Value index = {}) {
  return {id, 0, {}, std::move(outcome), std::move(index)};
}
Step write(Kex::AttributeId id, Value value, std::string outcome, Value index = {}) {
  return {id, 128, std::move(value), std::move(outcome), std::move(index)};
}
Step del(Kex::AttributeId id, std::string outcome, Value index = {}) {
  return {id, 129, {}, std::move(outcome), std::move(index)};
}
Step call(Kex::AttributeId id, std::vector<Value> const& arguments, std::string outcome) {
  return {id, 0, listOf(arguments), std::move(outcome)};
}

std::string outcomeOf(Value const& adapter, Step const& step) {
  auto const& [id, code, value, expected, index] = step;
  Kex::AttributeRequest const request{id, code, index.ptr(), value.ptr()};
  return outcome([&] { return adapter->access(request); });
}
void expectEach(Value const& adapter, std::vector<Step> const& steps) {
  for (auto const& step : steps) {
    EXPECT_EQ(outcomeOf(adapter, step), step.outcome) << step.id << ", " << &step - steps.data();
  }
}

struct SilentTransport final : Smbus::Transport {
  void start(Smbus::Transaction const&, Kex::U64, Smbus::AnswerSink&) override {}
};

/// A slot with an identifier that waits for the answer to its first poll.
struct Introspection : testing::Test {
  Ptr<Smbus::Bus> bus = Kex::make<Smbus::Bus>(std::make_unique<SilentTransport>());
  Ptr<SlotConfig> config =
      Kex::make<SlotConfig>("slot", Kex::make<SmbusVorn::VornDesc>(Kex::make<Hardware::Vorn>(bus)));
  Ptr<SlotStatus> status = Kex::make<SlotStatus>("status");
  Ptr<SlotDriver> driver = Kex::make<SlotDriver>("driver");
  Ptr<Emerson::PmbusIdentifier::IdentifierFactory> factory =
      Emerson::PmbusIdentifier::identifierFactoryFactory("factory");
  Ptr<Identifier> identifier = [this] {
    factory->doAddIdentifierToDriver(driver, config, nullptr, status);
    return Kex::dynamicCast<Identifier>(driver->identifier("EmersonPmbus"));
  }();
  Value const none = nullptr;
  Value const text = holderOf(String8("x"));
};

TEST_F(Introspection, answersEveryCodeAtEveryKindOfAttribute) {
  // What a request with neither index nor value is answered; "=" stands for any answer.
  std::string const noList = "type: Kex::GenericIf::List_";
  std::string const noKey = "type: kex_index";
  struct {
    std::map<unsigned, std::string> answers;  ///< by code; no other is supported
    char const* attributes;
  } const kinds[] = {
      {{{0, noList}},
       "11b doInitialize 11d handlePollForInsertionRequest 11e handleIdentifySupplyRequest "
       "11f handleCheckSupplyRequest 120 doResetIdentifier 216 doSetupCheckSupplyRequest "
       "218 handleConstructed"},
      {{{0, "="}},
       "104 state 206 clockInput 208 deviceId 209 fruInfoCommand 20c maxBytesReadInProcessCall"},
      {{{0, "="}, {128, "type: "}},
       "207 notifier 20a vornAddr 20b fruInfoAddr 20d mfrIdAddr 20e mfrId 217 derivedConstructed"},
      {{{0, "="}, {128, noList}, {129, "="}},
       "210 pollForInsertionWriteBuf 211 identifySupplyWriteBuf 212 checkSupplyWriteBuf "
       "213 pollForInsertionReadBuf 214 identifySupplyReadBuf 215 checkSupplyReadBuf"},
      {{{0, noKey}, {1, "= 2"}, {2, "= 2"}, {128, noKey}, {129, noKey}}, "20f mfrIdSupported"}};
  for (unsigned n = 0; n < 512; ++n) {
    bool const isConst = n < 256;
    auto const code = static_cast<U8>(n % 256);
    Value const adapter = KexType::genericIf(identifier, isConst);
    bool const isRefused = isConst && code >= 128;
    auto const unlessRefused = [&](std::string const& answer) {
      return isRefused ? "const: attempting to modify a const instance" : answer;
    };
    for (auto const& [answers, attributes] : kinds) {
      std::istringstream in(attributes);
      std::string name;
      for (Kex::AttributeId id = 0; in >> std::hex >> id >> name;) {
        auto const found = answers.find(code);
        std::string answer = found == answers.end() ? "not supported: " : found->second;
        auto const expected = unlessRefused(answer + (answer.ends_with(": ") ? name : ""));
        answer = outcomeOf(adapter, {id, code, none, ""});
        EXPECT_EQ(expected == "=" ? answer.substr(0, 1) : answer, expected) << name << n;
        // What is read or called without an index takes none.
        if (answers.at(0) == "=" || (answers.at(0) == noList && code == 0)) {
          EXPECT_EQ(outcomeOf(adapter, {id, code, none, "", text}),
                    unlessRefused("index: " + name));
        }
      }
    }
    for (Kex::AttributeId const id : {0x0U, 0x11cU, 0x205U, 0x219U, 0xffffffffU}) {
      EXPECT_EQ(outcomeOf(adapter, {id, code, none, ""}).substr(0, 6),
                isRefused ? "const:" : "range:")
          << id;
    }
  }
}

TEST_F(Introspection, readsAndWritesWhatFits) {
  Value const adapter = KexType::genericIf(identifier, false);
  Value const yes = holderOf(true);
  Value const no = holderOf(false);
  identifier->idprom()->headerIs(Kex::make<Ipmi::CommonAreaHeader>(*Kex::make<Hal::Buf>(0U)));
  Value const nine = holderOf(U32{9});
  Value const key = holderOf(String8("EMERSON"));
  expectEach(adapter, {read(0x104, "= 2"), read(0x206, "= clock"), read(0x208, "= 0x58"),
                       read(0x209, "= 176"), read(0x20c, "= 16"), read(0x20d, "= 0x3e89958"),
                       write(0x207, holderOf(Kex::make<Kex::Clock>("another")), "done"),
                       read(0x207, "= another"), write(0x207, holderOf(config), "type: notifier")});
  expectEach(
      adapter,
      {read(0x20a, "= 0x3e8b058"), read(0x20b, "= 65581144"), write(0x20a, text, "type: vornAddr"),
       write(0x20a, holderOf(Smbus::VornAddress(0x12)), "done"), read(0x20b, "= 18"),
       write(0x20b, yes, "type: fruInfoAddr"), write(0x20b, holderOf(Kex::U64{0x34}), "done"),
       read(0x20a, "= 0x34"), write(0x20e, text, "done"), read(0x20e, "= x"),
       write(0x217, holderOf(U8{0}), "type: derivedConstructed"), write(0x217, no, "done"),
       read(0x10b, "= false")});
  expectEach(
      adapter,
      {read(0x213, "= driver/EmersonPmbus/pollForInsertionReadBuf"), del(0x213, "= <Hal::Buf>"),
       del(0x213, "done"), write(0x213, listOf({}), "type: size"),
       write(0x213, listOf({text}), "type: size"),
       write(0x213, listOf({holderOf(Kex::U64{1} << 32)}), "type: size"),
       write(0x213, listOf({nine, none}), "unknown: pollForInsertionReadBuf"), read(0x213, "done"),
       write(0x213, listOf({nine}), "= driver/EmersonPmbus/pollForInsertionReadBuf")});
  expectEach(adapter,
             {del(0x210, "= <Hal::Buf>"),
              write(0x210, listOf({holderOf(U32{1})}),
                    "range: length 2 of a buffer with a capacity of 1 bytes"),
              read(0x210, "done"),
              write(0x210, listOf({nine}), "= driver/EmersonPmbus/pollForInsertionWriteBuf")});
  expectEach(adapter,
             {read(0x20f, "= true", key), read(0x20f, "= false", text),
              read(0x20f, "type: kex_index", nine), write(0x20f, none, "type: mfrIdSupported", key),
              write(0x20f, no, "done", key), read(0x20f, "= false", key),
              write(0x20f, yes, "done", text), Step{0x20f, 1, none, "= 3"},
              del(0x20f, "done", text), del(0x20f, "done", text), Step{0x20f, 1, none, "= 2"}});
  expectEach(adapter, {Step{0x11b, 0, text, "type: Kex::GenericIf::List_"},
                       call(0x11b, {text}, "unknown: doInitialize"), call(0x120, {}, "done"),
                       read(0x20e, "= "), call(0x216, {}, "type: supported"),
                       call(0x216, {yes, none}, "unknown: doSetupCheckSupplyRequest"),
                       call(0x216, {yes}, "done")});
  EXPECT_EQ(identifier->pollForInsertionReadBuf()->size(), 9U);
  EXPECT_EQ(identifier->checkSupplyRequest()->loaded(),
            Hardware::VornRequest::Loaded::writeAndRead);
  for (Kex::AttributeId id = 0x210; id <= 0x215; ++id) {  // each its own buffer
    expectEach(adapter, {del(id, "= <Hal::Buf>"), read(id, "done")});
  }
}

TEST_F(Introspection, walksTheTableOfManufacturers) {
  Value const adapter = KexType::genericIf(identifier, true);
  identifier->mfrIdSupportedIs("ARTESYN", false);
  std::string met;
  for (auto const walk = adapter->iterator(0x20f); !walk->isAtEnd(); walk->advance()) {
    identifier->mfrIdSupportedDel(walk->key()->text());
    met = met + walk->key()->text().charPtr() + walk->value()->text().charPtr();
  }
  EXPECT_TRUE(met == "ARTESYNfalseEMERSONtrue" || met == "EMERSONtrueARTESYNfalse") << met;
  EXPECT_EQ(outcome([&] { return adapter->iterator(0x208)->key(); }).substr(0, 6), "range:");
}

TEST_F(Introspection, takesTheDeclaredArgumentsOfAFunction) {
  auto const descriptor = Emerson::IpmiIdentifier::dS2900Factory("d");
  Value const good = holderOf(ipmiTest::idpromOf({.partNumber = "DS2900-3"}));
  Value const noConfig = holderOf(Ptr<SlotConfig>());
  expectEach(KexType::genericIf(descriptor, true),
             {call(0x102, {}, "type: idpromContents"), call(0x102, {none}, "type: idpromContents"),
              call(0x102, {holderOf(descriptor)}, "type: idpromContents"),
              call(0x102, {noConfig}, "type: idpromContents"),
              call(0x102, {holderOf(Ptr<Ipmi::IdpromContents>())}, "range: null ValidPtr"),
              call(0x102, {holderOf(Kex::make<Ipmi::IdpromContents>())}, "range: null ValidPtr"),
              call(0x102, {good, good}, "unknown: doGenerateFdl"),
              Step{0x102, 1, listOf({good}), "not supported: doGenerateFdl"},
              read(0x100, "= false"), call(0x102, {good}, "done"), read(0x100, "= true"),
              del(0x102, "const: attempting to modify a const instance")});

  driver->identifierDel("EmersonPmbus");
  Value const d = holderOf(driver);
  Value const c = holderOf(config);
  Value const cell = holderOf(Ptr<Hardware::PowerSupply::CellConfig>());
  Value const s = holderOf(status);
  Value const adapter = KexType::genericIf(factory, false);
  expectEach(adapter,
             {read(0x1, "= factory"), read(0x1, "index: name", text),
              write(0x4, holderOf(true), "not supported: isNondestructing"),
              call(0x102, {}, "type: driver"), call(0x102, {d}, "type: config"),
              call(0x102, {d, c}, "type: cellConfig"), call(0x102, {d, c, cell}, "type: status"),
              call(0x102, {holderOf(Ptr<SlotDriver>()), c, cell, s}, "range: null ValidPtr"),
              call(0x102, {d, noConfig, cell, s}, "range: null ValidPtr"),
              call(0x102, {d, c, cell, holderOf(Ptr<SlotStatus>())}, "range: null ValidPtr"),
              call(0x102, {d, c, cell, s, cell}, "unknown: doAddIdentifierToDriver")});
  EXPECT_EQ(driver->identifier("EmersonPmbus"), nullptr);
  expectEach(adapter, {call(0x102, {d, c, cell, s}, "done")});
  EXPECT_NE(driver->identifier("EmersonPmbus"), nullptr);
}

TEST_F(Introspection, constructsCastsAndReadsWhatTheChainOfATypeSays) {
  std::vector<Ptr<Kex::PtrInterface>> objects{identifier, factory};
  std::ranges::copy(ipmiTest::oneOfEach(), std::back_inserter(objects));
  std::set<KexType const*> types{&Kex::Clock::_fwkType()};
  auto const chainOf = [](auto const& object) {
    std::set<KexType const*> chain;
    for (KexType const* type = &object->fwkType(); type != nullptr; type = type->base()) {
      chain.insert(type);
    }
    return chain;
  };
  for (auto const& object : objects) {
    types.merge(chainOf(object));
  }
  Value const name = holderOf(Kex::Name("n"));
  for (auto const& object : objects) {
    auto const chain = chainOf(object);
    KexType const& own = object->fwkType();
    std::string const shortName = own.name().charPtr();
    std::string const path = Kex::valueToStrep(object).charPtr();
    Value const adapter = KexType::genericIf(object, true);
    for (KexType const* const type : types) {
      bool const isGranted = chain.contains(type);
      EXPECT_EQ(outcome([&] { return holderOf(adapter->castTo(*type)); }),
                isGranted ? "= " + path : "type: " + shortName)
          << type->fullName();
      EXPECT_EQ(type->valueFromPtr(object.ptr())->object(), isGranted ? object : nullptr);
      EXPECT_EQ(type->valueFromPtr(nullptr)->object(), nullptr);
    }
    std::pair<Value, std::string> const rows[] = {
        {none, "type: Kex::GenericIf::List_"},
        {listOf({}), "type: name"},
        {listOf({listOf({})}), "type: name"},
        {listOf({name, name}), "unknown: " + shortName},
        {listOf({name}), "= n"},
    };
    for (auto const& [arguments, made] : rows) {
      EXPECT_EQ(outcome([&] { return own.genericIf(arguments.ptr(), true); }),
                object == identifier ? "type: Emerson::PmbusIdentifier::Identifier cannot be made "
                                       "from its name alone"
                                     : made);
    }
    EXPECT_EQ(outcome([&] { return own.valueFromText("(null)"); }), "= (null)");
    EXPECT_EQ(outcome([&] { return own.valueFromText("/ "); }),
              "conversion: cannot convert '/' to " + std::string(own.fullName().charPtr()));
  }
  Kex::root().memberIs(driver);
  auto const fromText = [](char const* path) {
    return outcome([&] { return Identifier::_fwkType().valueFromText(path); });
  };
  EXPECT_EQ(fromText("/driver/EmersonPmbus"), "= /driver/EmersonPmbus");
  EXPECT_EQ(fromText("/driver/EmersonPmbus]"),
            "conversion: junk at column 20 deserializing /driver/EmersonPmbus]");
  // All that it holds is found where it says that it is.
  for (Kex::Name const& member : identifier->memberNames()) {
    auto const held = identifier->member(member);
    String8 const path = held->path();
    EXPECT_EQ(path, Kex::format("/driver/EmersonPmbus/%s", member.charPtr()));
    EXPECT_EQ(Kex::textToPtr(path, held->fwkType()), held);
  }
  auto const buffer = identifier->checkSupplyReadBufDel();
  driver->identifierDel("EmersonPmbus");
  EXPECT_EQ(Kex::valueToStrep(buffer), "<Hal::Buf>");
  EXPECT_EQ(Kex::valueToStrep(identifier->checkSupplyRequest()), "<Hardware::VornRequest>");
  driver->identifierIs("Renamed", identifier);
  EXPECT_EQ(fromText("/driver/Renamed"), "= /driver/Renamed");
  Kex::root().memberDel("driver");
}

}  // namespace
