// What loading the plug-in tells an introspection reactor, and what it leaves in the type tree.
// Each process loads it once: arguments are the library and "active" or "inactive".
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/kex/base/Format.h"
#include "host/kex/entity/Entity.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/type/Introspection.h"

namespace {

using Kex::KexType;
using Kex::Name;
using Kex::Ptr;
using Lines = std::vector<std::string>;

bool isActive = false;

/// "name id value-type[key type](arguments) introspection-flag flag-words".
std::string described(Kex::KexAttr const& attribute) {
  std::string text = attribute.name().charPtr();
  text += Kex::format(" 0x%x ", attribute.id()).view();
  text += attribute.valueType().fullName().view();
  if (attribute.keyType() != nullptr) {
    text += "[" + std::string(attribute.keyType()->fullName().view()) + "]";
  }
  for (auto const& argument : attribute.arguments()) {
    text += &argument == &attribute.arguments().front() ? "(" : ", ";
    text += std::string(argument.name.charPtr()) + " " + argument.type.charPtr();
  }
  text += attribute.arguments().empty() ? " " : ") ";
  auto const flags = attribute.introspectionFlags();
  text += flags.isFunction() ? "F" : flags.isIndependentDomainAttr() ? "D" : "-";
  return text + Kex::format(" 0x%x 0x%x", attribute.flags()[0], attribute.flags()[1]).charPtr();
}

struct Recorder final : Kex::IntrospectionTarget {
  bool isOn() const override { return on; }
  void handleNameSpace(Name const& name) override { add("name space ", name); }
  void handleType(KexType& type, KexType* base) override {
    add("type ", type.name()), add("base ", Name(base->fullName()));
  }
  void handleAttr(Kex::KexAttr& attribute) override { calls.push_back(described(attribute)); }
  void handleAttrContextExit() override { calls.emplace_back("end of attribute"); }
  void handleScopeExit() override { calls.emplace_back("end of scope"); }
  void add(char const* what, Name const& name) {
    calls.push_back(what + std::string(name.charPtr()));
  }

  bool on = false;
  Lines calls;
};
Recorder recorder;

Lines split(char const* text, char separator) {
  std::istringstream in(text);
  Lines parts;
  for (std::string part; std::getline(in, part, separator);) {
    parts.push_back(part);
  }
  return parts;
}

/// What types declare. Attributes as `described` writes them.
struct Declared {
  char const* nameSpace;
  char const* base;
  bool isEntity;
  Lines types;  ///< in the order of registration
  Lines constructorArguments;
  Lines attributes;
};

Declared const kDescriptors{
    "IpmiIdentifier",
    "Ipmi::SupportedPowerSupplyDescriptorBase",
    true,
    split("DS3000 DS3000_Reversed DS3000TE DS3000TE_Reversed DS3000DC DS3000DC_Reversed DS2700 "
          "DS2700_Reversed DS2700DC DS2700DC_Reversed DS2900 Emerson760 DS460TwoMicrocontroller "
          "DS460TwoMicrocontroller_Reversed DS460ThreeMicrocontroller "
          "DS460ThreeMicrocontroller_Reversed DS460DC DS460DC_Reversed DS500 DS500_Reversed "
          "DS500DC DS500DC_Reversed DS750 DS750_Reversed DS1100 DS1100_Reversed DS1100DC "
          "DS1100DC_Reversed DS1600 DS1600_Reversed",
          ' '),
    {"name Kex::Name"},
    {"doGenerateFdl 0x102 void(idpromContents Ipmi::IdpromContents) F 0x20001 0x400"}};
Declared const kFactory{
    "PmbusIdentifier",
    "PowerSupplyDetector::IdentifierFactoryBase",
    true,
    {"IdentifierFactory"},
    {"name Kex::Name"},
    {"doAddIdentifierToDriver 0x102 void(driver PowerSupplyDetector::SlotDriver, "
     "config Hardware::PowerSupplySlot::SlotConfig, cellConfig Hardware::PowerSupply::CellConfig, "
     "status Hardware::PowerSupplySlot::SlotStatus) F 0x22001 0x400"}};
Declared const kIdentifier{
    "PmbusIdentifier",
    "Ipmi::IdentifierBase",
    false,
    {"Identifier"},
    {"notifier Kex::Clock", "config Hardware::PowerSupplySlot::SlotConfig",
     "status Hardware::PowerSupplySlot::SlotStatus",
     "pollForInsertionRequest Hardware::VornRequest", "identifySupplyRequest Hardware::VornRequest",
     "checkSupplyRequest Hardware::VornRequest", "presentIntCtrl Fru::IntCtrl",
     "presentIntFd Kex::FileDescriptor", "presentGpo Fru::Gpo", "deviceId Hardware::SmbusDeviceId",
     "fruInfoCommand U8"},
    split(R"(doInitialize 0x11b void F 0x20001 0x400
handlePollForInsertionRequest 0x11d void F 0x20001 0x400
handleIdentifySupplyRequest 0x11e void F 0x20001 0x400
handleCheckSupplyRequest 0x11f void F 0x20001 0x400
doResetIdentifier 0x120 void F 0x20001 0x400
deviceId 0x208 Hardware::SmbusDeviceId D 0x220109 0x40000400
fruInfoCommand 0x209 U8 D 0x220109 0x40000400
vornAddr 0x20a Smbus::VornAddress D 0x220103 0x400
fruInfoAddr 0x20b U64 - 0x220007 0x400
maxBytesReadInProcessCall 0x20c U32 - 0x220001 0x40000410
mfrIdAddr 0x20d Smbus::VornAddress D 0x220103 0x400
mfrId 0x20e Kex::String8 D 0x220103 0x400
mfrIdSupported 0x20f bool[Kex::String8] D 0x1a20103 0x400
pollForInsertionWriteBuf 0x210 Hal::Buf(size U32) D 0x8220103 0x10000400
identifySupplyWriteBuf 0x211 Hal::Buf(size U32) D 0x8220103 0x10000400
checkSupplyWriteBuf 0x212 Hal::Buf(size U32) D 0x8220103 0x10000400
pollForInsertionReadBuf 0x213 Hal::Buf(size U32) D 0x8220103 0x10000400
identifySupplyReadBuf 0x214 Hal::Buf(size U32) D 0x8220103 0x10000400
checkSupplyReadBuf 0x215 Hal::Buf(size U32) D 0x8220103 0x10000400
doSetupCheckSupplyRequest 0x216 void(supported bool) F 0x20001 0x400
derivedConstructed 0x217 bool D 0x220103 0x400
handleConstructed 0x218 void F 0x20001 0x400
hasNotificationActiveIs 0x0 bool(hasNotificationActiveIs bool) F 0x1 0x400
kexDoZombieReactors 0x0 void(on bool) F 0x1 0x400)",
          '\n')};

KexType& record(std::string const& fullName) {
  KexType* const found = KexType::typeNode(Name(fullName.c_str()));
  return found != nullptr ? *found : throw std::runtime_error(fullName + " is not in the tree");
}
KexType& record(Declared const& declared, std::string const& type) {
  return record(std::string("Emerson::") + declared.nameSpace + "::" + type);
}

std::string nameIn(std::string const& line) { return line.substr(0, line.find(' ')); }

/// The attributes of a type whose own ones are left out, then these.
Lines schema(KexType const& type, Lines const& own, bool isReplacing) {
  Lines lines;
  for (auto const& attribute : type.attributeQ()) {
    auto const isSame = [&](auto const& line) { return attribute->name() == nameIn(line).c_str(); };
    if (!isReplacing || std::ranges::none_of(own, isSame)) {
      lines.push_back(described(*attribute));
    }
  }
  std::ranges::copy(own, std::back_inserter(lines));
  return lines;
}

TEST(Loading, tellsAnActiveReactorOfEachModuleOnce) {
  std::vector<std::vector<Declared const*>> modules{{&kDescriptors}, {&kIdentifier, &kFactory}};
  if (recorder.calls.size() > 1 && recorder.calls[1].ends_with("PmbusIdentifier")) {
    std::ranges::reverse(modules);  // which module comes first is left open
  }
  Lines told;
  for (auto const& module : modules) {
    told.insert(told.end(),
                {"name space Emerson", std::string("name space ") + module[0]->nameSpace});
    for (Declared const* const declared : module) {
      for (auto const& type : declared->types) {
        told.insert(told.end(), {"type " + type, std::string("base ") + declared->base});
        for (auto const& line : schema(record(declared->base), declared->attributes, false)) {
          told.insert(told.end(), {line, "end of attribute"});
        }
        told.emplace_back("end of scope");
      }
    }
    told.insert(told.end(), 2, "end of scope");
  }
  recorder.on = true;
  record(kDescriptors, "DS500").valueFromPtr(nullptr);  // a record that exists is told of no more
  EXPECT_EQ(recorder.calls, isActive ? told : Lines());
}

TEST(Loading, entersEveryTypeWithItsSchema) {
  for (Declared const* const declared : {&kDescriptors, &kIdentifier, &kFactory}) {
    KexType& base = record(declared->base);
    Lines made;
    std::ranges::transform(base.derivedTypes(), std::back_inserter(made),
                           [](auto* type) { return type->name().charPtr(); });
    Lines order = declared->types;
    if (isActive) {
      std::ranges::sort(order);  // the pass makes the records, by name, before they are registered
    }
    EXPECT_EQ(made, order);
    for (auto const& name : declared->types) {
      KexType const& type = record(*declared, name);
      EXPECT_EQ(type.name(), name.c_str());
      EXPECT_EQ(type.scope(), nullptr);
      EXPECT_EQ(type.base(), &base) << name;
      EXPECT_TRUE(type.isNondestructing());
      EXPECT_EQ(type.size() != 0, isActive) << name;
      EXPECT_EQ(type.isEntity(), isActive && declared->isEntity) << name;
      EXPECT_EQ(type.hasGenericIfSupport(), isActive) << name;
      Lines arguments;
      std::ranges::transform(type.constructorArgNames(), type.constructorArgTypes(),
                             std::back_inserter(arguments),
                             [](Name const& argument, Name const& of) {
                               return std::string(argument.charPtr()) + " " + of.charPtr();
                             });
      EXPECT_EQ(arguments, isActive ? declared->constructorArguments : Lines()) << name;
      // What is declared anew replaces the inherited attribute and stands last.
      EXPECT_EQ(schema(type, {}, false),
                isActive ? schema(base, declared->attributes, true) : Lines())
          << name;
    }
  }
}

TEST(Loading, letsEntitiesBeMadeAndReachedByName) {
  EXPECT_EQ(Kex::Entity::_fwkType().constructorArgTypes().front(), Name("Kex::Name"));
  for (Declared const* const declared : {&kDescriptors, &kFactory}) {
    KexType const& type = record(*declared, declared->types.back());
    auto const arguments = Kex::make<Kex::GenericIf::List_>();
    arguments->append(Kex::holderOf(Name("made here")));
    Ptr<Kex::GenericIf> const adapter = type.genericIf(arguments.ptr(), true);
    auto const entity = Kex::dynamicCast<Kex::Entity>(adapter->object());
    EXPECT_EQ(&entity->fwkType(), &type);
    // The base's text, whether the type's own schema was declared or not.
    EXPECT_EQ(entity->attributeString(0x1), "made here");
    EXPECT_EQ(entity->attributeString(0x102), "unknown");
    // Looked up in the type's record, else in its base's.
    Kex::KexAttr const* const own = adapter->attribute(nameIn(declared->attributes[0]).c_str());
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(&own->owner(), isActive ? &type : type.base());
  }
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  std::span<char*> const arguments(argv, static_cast<std::size_t>(argc));
  if (argc != 3) {
    std::fprintf(stderr, "usage: introspection-tests LIBRARY active|inactive\n");
    return 2;
  }
  recorder.on = isActive = arguments[2] == std::string("active");
  Kex::IntrospectionReactor::global().targetIs(&recorder);
  if (dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL) == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  return RUN_ALL_TESTS();
}
