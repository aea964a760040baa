// What loading the plug-in tells an introspection reactor, and what it leaves in the type tree.
// Each process loads it once: arguments are the library and "active" or "inactive".
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/kex/Directory.h"
#include "host/kex/Format.h"
#include "host/kex/GenericIf.h"
#include "host/kex/Introspection.h"

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
  void add(char const* what, Name const& name) { calls.push_back(what + std::string(name.charPtr())); }

  bool on = false;
  Lines calls;
};
Recorder recorder;

/// What each type declares. Fields as `described` writes them.
struct Declared {
  char const* nameSpace;
  char const* base;
  bool isEntity;
  std::vector<char const*> types;  ///< in the order of registration
  Lines constructorArguments;
  Lines attributes;
};

Declared const kDescriptors{
    "IpmiIdentifier",
    "Ipmi::SupportedPowerSupplyDescriptorBase",
    true,
    {"DS3000", "DS3000_Reversed", "DS3000TE", "DS3000TE_Reversed", "DS3000DC", "DS3000DC_Reversed",
     "DS2700", "DS2700_Reversed", "DS2700DC", "DS2700DC_Reversed", "DS2900", "Emerson760",
     "DS460TwoMicrocontroller", "DS460TwoMicrocontroller_Reversed", "DS460ThreeMicrocontroller",
     "DS460ThreeMicrocontroller_Reversed", "DS460DC", "DS460DC_Reversed", "DS500", "DS500_Reversed",
     "DS500DC", "DS500DC_Reversed", "DS750", "DS750_Reversed", "DS1100", "DS1100_Reversed",
     "DS1100DC", "DS1100DC_Reversed", "DS1600", "DS1600_Reversed"},
    {"name Kex::Name"},
    {"doGenerateFdl 0x102 void(idpromContents Ipmi::IdpromContents) F 0x20001 0x400"}};
Declared const kIdentifier{
    "PmbusIdentifier",
    "Ipmi::IdentifierBase",
    false,
    {"Identifier"},
    {"notifier Kex::Clock", "config Hardware::PowerSupplySlot::SlotConfig",
     "status Hardware::PowerSupplySlot::SlotStatus", "pollForInsertionRequest Hardware::VornRequest",
     "identifySupplyRequest Hardware::VornRequest", "checkSupplyRequest Hardware::VornRequest",
     "presentIntCtrl Fru::IntCtrl", "presentIntFd Kex::FileDescriptor", "presentGpo Fru::Gpo",
     "deviceId Hardware::SmbusDeviceId", "fruInfoCommand U8"},
    {"doInitialize 0x11b void F 0x20001 0x400",
     "handlePollForInsertionRequest 0x11d void F 0x20001 0x400",
     "handleIdentifySupplyRequest 0x11e void F 0x20001 0x400",
     "handleCheckSupplyRequest 0x11f void F 0x20001 0x400",
     "doResetIdentifier 0x120 void F 0x20001 0x400",
     "deviceId 0x208 Hardware::SmbusDeviceId D 0x220109 0x40000400",
     "fruInfoCommand 0x209 U8 D 0x220109 0x40000400",
     "vornAddr 0x20a Smbus::VornAddress D 0x220103 0x400",
     "fruInfoAddr 0x20b U64 - 0x220007 0x400",
     "maxBytesReadInProcessCall 0x20c U32 - 0x220001 0x40000410",
     "mfrIdAddr 0x20d Smbus::VornAddress D 0x220103 0x400",
     "mfrId 0x20e Kex::String8 D 0x220103 0x400",
     "mfrIdSupported 0x20f bool[Kex::String8] D 0x1a20103 0x400",
     "pollForInsertionWriteBuf 0x210 Hal::Buf(size U32) D 0x8220103 0x10000400",
     "identifySupplyWriteBuf 0x211 Hal::Buf(size U32) D 0x8220103 0x10000400",
     "checkSupplyWriteBuf 0x212 Hal::Buf(size U32) D 0x8220103 0x10000400",
     "pollForInsertionReadBuf 0x213 Hal::Buf(size U32) D 0x8220103 0x10000400",
     "identifySupplyReadBuf 0x214 Hal::Buf(size U32) D 0x8220103 0x10000400",
     "checkSupplyReadBuf 0x215 Hal::Buf(size U32) D 0x8220103 0x10000400",
     "doSetupCheckSupplyRequest 0x216 void(supported bool) F 0x20001 0x400",
     "derivedConstructed 0x217 bool D 0x220103 0x400",
     "handleConstructed 0x218 void F 0x20001 0x400",
     "hasNotificationActiveIs 0x0 bool(hasNotificationActiveIs bool) F 0x1 0x400",
     "kexDoZombieReactors 0x0 void(on bool) F 0x1 0x400"}};
Declared const kFactory{
    "PmbusIdentifier",
    "PowerSupplyDetector::IdentifierFactoryBase",
    true,
    {"IdentifierFactory"},
    {"name Kex::Name"},
    {"doAddIdentifierToDriver 0x102 void(driver PowerSupplyDetector::SlotDriver, "
     "config Hardware::PowerSupplySlot::SlotConfig, cellConfig Hardware::PowerSupply::CellConfig, "
     "status Hardware::PowerSupplySlot::SlotStatus) F 0x22001 0x400"}};
Declared const* const kAll[] = {&kDescriptors, &kIdentifier, &kFactory};

KexType& record(std::string const& fullName) {
  KexType* const found = KexType::typeNode(Name(fullName.c_str()));
  if (found == nullptr) {
    throw std::runtime_error(fullName + " is not in the type tree");
  }
  return *found;
}
KexType& record(Declared const& declared, char const* type) {
  return record(std::string("Emerson::") + declared.nameSpace + "::" + type);
}

Lines allDescribed(KexType const& type) {
  Lines lines;
  for (auto const& attribute : type.attributeQ()) {
    lines.push_back(described(*attribute));
  }
  return lines;
}

std::string nameIn(std::string const& line) { return line.substr(0, line.find(' ')); }

TEST(Loading, tellsAnActiveReactorOfEachModuleOnce) {
  Lines told;
  auto const tell = [&](char const* nameSpace, std::initializer_list<Declared const*> all) {
    told.insert(told.end(), {"name space Emerson", std::string("name space ") + nameSpace});
    for (Declared const* const declared : all) {
      for (char const* const type : declared->types) {
        told.insert(told.end(), {std::string("type ") + type, std::string("base ") + declared->base});
        Lines attributes = allDescribed(record(declared->base));
        EXPECT_FALSE(attributes.empty());
        std::ranges::copy(declared->attributes, std::back_inserter(attributes));
        for (auto const& attribute : attributes) {
          told.insert(told.end(), {attribute, "end of attribute"});
        }
        told.emplace_back("end of scope");
      }
    }
    told.insert(told.end(), 2, "end of scope");
  };
  if (isActive) {
    tell("IpmiIdentifier", {&kDescriptors});
    std::size_t const half = told.size();
    tell("PmbusIdentifier", {&kIdentifier, &kFactory});
    if (recorder.calls.size() > 1 && recorder.calls[1] == "name space PmbusIdentifier") {
      // Which module comes first is left open.
      std::ranges::rotate(told, told.begin() + static_cast<std::ptrdiff_t>(half));
    }
  }
  recorder.on = true;
  record(kDescriptors, "DS500").valueFromPtr(nullptr);  // a record that exists is told of no more
  EXPECT_EQ(recorder.calls, told);
}

TEST(Loading, entersEveryTypeWithItsSchema) {
  for (Declared const* const declared : kAll) {
    KexType& base = record(declared->base);
    for (char const* const name : declared->types) {
      KexType const& type = record(*declared, name);
      EXPECT_EQ(type.name(), name);
      EXPECT_EQ(type.scope(), nullptr);
      EXPECT_EQ(type.base(), &base) << name;
      EXPECT_TRUE(type.isNondestructing());
      EXPECT_EQ(type.size() != 0, isActive) << name;
      EXPECT_EQ(type.isEntity(), isActive && declared->isEntity) << name;
      EXPECT_EQ(type.hasGenericIfSupport(), isActive) << name;
      Lines arguments;
      for (std::size_t i = 0; i < type.constructorArgNames().size(); ++i) {
        arguments.push_back(std::string(type.constructorArgNames()[i].charPtr()) + " " +
                            type.constructorArgTypes().at(i).charPtr());
      }
      EXPECT_EQ(arguments, isActive ? declared->constructorArguments : Lines()) << name;
      // What is declared anew replaces the inherited attribute and stands last.
      Lines attributes;
      if (isActive) {
        attributes = allDescribed(base);
        for (auto const& own : declared->attributes) {
          std::erase_if(attributes, [&](auto const& line) { return nameIn(line) == nameIn(own); });
        }
        std::ranges::copy(declared->attributes, std::back_inserter(attributes));
      }
      EXPECT_EQ(allDescribed(type), attributes) << name;
    }
  }
}

TEST(Loading, makesTheRecordsInItsOwnOrder) {
  std::vector<std::string> expected(kDescriptors.types.begin(), kDescriptors.types.end());
  if (isActive) {
    std::ranges::sort(expected);  // the pass fetches them by name, before they are registered
  }
  std::vector<std::string> made;
  for (KexType const* const type : record(kDescriptors.base).derivedTypes()) {
    made.emplace_back(type->name().charPtr());
  }
  EXPECT_EQ(made, expected);
}

TEST(Loading, letsEveryTypeBeMadeAndReachedByName) {
  for (Declared const* const declared : {&kDescriptors, &kFactory}) {
    for (char const* const name : declared->types) {
      KexType const& type = record(*declared, name);
      auto const arguments = Kex::make<Kex::GenericIf::List_>();
      arguments->append(Kex::holderOf(Name("made here")));
      Ptr<Kex::GenericIf> const adapter = type.genericIf(arguments.ptr(), true);
      auto const entity = Kex::dynamicCast<Kex::Entity>(adapter->object());
      EXPECT_EQ(&entity->fwkType(), &type);
      EXPECT_EQ(adapter->access({.id = 0x1})->text(), "made here") << name;
      // The base's text, whether the type's own schema was declared or not.
      EXPECT_EQ(entity->attributeString(0x1), "made here") << name;
      EXPECT_EQ(entity->attributeString(0x102), "unknown") << name;
      // Looked up in the type's record, else in its base's.
      Kex::KexAttr const* const own = adapter->attribute(nameIn(declared->attributes[0]).c_str());
      ASSERT_NE(own, nullptr);
      EXPECT_EQ(&own->owner(), isActive ? &type : type.base()) << name;
      Kex::root().memberIs(entity);
      EXPECT_EQ(type.valueFromText("/made\\ here")->object(), entity) << name;
      EXPECT_EQ(type.valueFromPtr(entity.ptr())->text(), "/made\\ here");
      Kex::root().memberDel("made here");
    }
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
