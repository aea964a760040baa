// Values and references as text, both ways; bus addresses.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "host/hal/Buf.h"
#include "host/kex/Clock.h"
#include "host/kex/Directory.h"
#include "host/kex/GenericIf.h"
#include "host/smbus/VornAddress.h"

namespace {

using Kex::Directory;
using Kex::Ptr;
using Kex::strepToValue;
using Kex::String8;

/// What reading a text throws: its text; empty when nothing is thrown. The identifier must be 12.
std::string refusal(std::function<void()> const& read) {
  try {
    read();
  } catch (Kex::Exception const& error) {
    EXPECT_EQ(error.id(), 12U) << error.what();
    return error.what();
  }
  return {};
}

class KexText : public testing::Test {
 protected:
  KexText() {
    Kex::root().memberIs(top);
    top->memberIs(odd);
    odd->memberIs(leaf);
  }
  ~KexText() override { Kex::root().memberDel("top"); }

  Ptr<Directory> top = Kex::make<Directory>("top");
  Ptr<Directory> odd = Kex::make<Directory>(R"(a/b [c],(d){e} \f	g)");
  Ptr<Kex::Clock> leaf = Kex::make<Kex::Clock>("leaf");
};

TEST_F(KexText, pathsAreEscapedAndReadBack) {
  std::string const oddPath = R"(/top/a\/b\ \[c\]\,\(d\)\{e\}\ \\f\	g)";
  struct {
    Ptr<Kex::PtrInterface> object;
    std::string text;
  } const rows[] = {
      {Ptr<Directory>(&Kex::root()), "/"}, {top, "/top"},     {odd, oddPath},
      {leaf, oddPath + "/leaf"},           {nullptr, "null"},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(Kex::valueToStrep(row.object).view(), row.text);
    EXPECT_EQ(strepToValue<Ptr<Kex::PtrInterface>>(String8(row.text)), row.object) << row.text;
  }
  EXPECT_EQ(Kex::valueToStrep(Kex::make<Hal::Buf>(1U)), "<Hal::Buf>");
  odd->memberDel("leaf");
  EXPECT_EQ(leaf->parent(), nullptr);
  EXPECT_EQ(leaf->path(), "leaf");
}

TEST_F(KexText, readingReferencesStopsAtTheFirstByteThatIsNoneOfThem) {
  struct {
    char const* text;
    bool isTop;  ///< else null, where nothing is refused
    char const* refused;
  } const rows[] = {
      {"/top", true, ""},
      {"/to\\p", true, ""},
      {"", false, ""},
      {"null", false, ""},
      {"/nowhere", false, ""},
      {"/top/nowhere/else", false, ""},
      {"/top/", false, ""},
      {"//top", false, ""},
      {"/top ", false, "junk at column 4 deserializing /top "},
      {"/top]", false, "junk at column 4 deserializing /top]"},
      {"/top\\", false, "junk at column 4 deserializing /top\\"},
      {"/ top", false, "junk at column 1 deserializing / top"},
      {"nullx", false, "junk at column 4 deserializing nullx"},
      {"top", false, "junk at column 0 deserializing top"},
      {" /top", false, "junk at column 0 deserializing  /top"},
      {"/", false, "cannot convert '/' to Kex::Clock"},
      {"/top,x", false, "junk at column 4 deserializing /top,x"},
  };
  for (auto const& row : rows) {
    Ptr<Kex::PtrInterface> read;
    auto const refused = refusal([&] {
      bool const isForClock = std::string_view(row.text) == "/";
      read = isForClock ? Ptr<Kex::PtrInterface>(strepToValue<Ptr<Kex::Clock>>(row.text))
                        : Ptr<Kex::PtrInterface>(strepToValue<Ptr<Directory>>(row.text));
    });
    EXPECT_EQ(refused, row.refused) << row.text;
    EXPECT_EQ(read, row.isTop ? Ptr<Kex::PtrInterface>(top) : nullptr) << row.text;
  }
  // Another type is refused before what follows it is looked at.
  EXPECT_EQ(refusal([] { strepToValue<Ptr<Kex::Clock>>("/top junk"); }),
            "cannot convert '/top' to Kex::Clock");
  EXPECT_EQ(refusal([] { Kex::Clock::_fwkType().valueFromText("/top"); }),
            "cannot convert '/top' to Kex::Clock");
}

TEST_F(KexText, membersAreReplacedByName) {
  auto const again = Kex::make<Kex::Clock>("leaf");
  odd->memberIs(again);
  EXPECT_EQ(odd->member("leaf"), again);
  EXPECT_EQ(leaf->parent(), nullptr);
  EXPECT_EQ(odd->memberNames().size(), 1U);
  Ptr<Directory> const held = odd;
  top->memberDel(odd->name());
  EXPECT_EQ(held->path(), again->parent()->path());
}

TEST_F(KexText, aSingletonIsTheMemberNamedAfterItsType) {
  Kex::Name const name("Kex::Clock");
  EXPECT_FALSE(Kex::Entity::singletonExists(name));
  // A clock cannot be made from a name alone.
  EXPECT_THROW(Kex::Entity::singletonIs(Kex::Clock::_fwkType()), Kex::TypeException);
  auto const clock = Kex::make<Kex::Clock>(name);
  Kex::root().memberIs(clock);
  EXPECT_TRUE(Kex::Entity::singletonExists(name));
  EXPECT_EQ(Kex::Entity::singleton<Kex::Clock>(), clock);
  Kex::root().memberIs(Kex::make<Directory>(name));
  EXPECT_EQ(Kex::Entity::singleton<Kex::Clock>(), nullptr);
  Kex::root().memberDel(name);
}

TEST(KexValues, areReadByTheirType) {
  struct {
    char const* type;
    char const* text;
    char const* value;  ///< as written again; null when refused
  } const rows[] = {
      {"bool", "true", "true"},
      {"bool", "0", "false"},
      {"bool", "yes", nullptr},
      {"bool", "", nullptr},
      {"U8", "255", "255"},
      {"U8", "0xfF", "255"},
      {"U8", "256", nullptr},
      {"U8", "-1", nullptr},
      {"U8", "+1", nullptr},
      {"U8", " 1", nullptr},
      {"U8", "1 ", nullptr},
      {"U8", "", nullptr},
      {"U8", "0x", nullptr},
      {"U32", "4294967295", "4294967295"},
      {"U32", "4294967296", nullptr},
      {"U64", "0xffffffffffffffff", "18446744073709551615"},
      {"U64", "18446744073709551616", nullptr},
      {"double", "0.333333333333333", "0.333333333333"},
      {"double", "1e", nullptr},
      {"Kex::String8", "any [text]", "any [text]"},
      {"Kex::Name", "any [text]", "any [text]"},
      {"Hardware::SmbusDeviceId", "0x58", "0x58"},
      {"Hardware::SmbusDeviceId", "256", nullptr},
      {"Smbus::VornAddress", "0x3e8b058", "0x3e8b058"},
      {"Smbus::VornAddress", "x", nullptr},
  };
  // Records of value types are made when they are first used.
  Kex::typeOf<bool>(), Kex::typeOf<Kex::U8>(), Kex::typeOf<Kex::U32>(), Kex::typeOf<Kex::U64>();
  Kex::typeOf<double>(), Kex::typeOf<String8>(), Kex::typeOf<Kex::Name>();
  Kex::typeOf<Hardware::SmbusDeviceId>(), Kex::typeOf<Smbus::VornAddress>();
  for (auto const& row : rows) {
    Kex::KexType const* const type = Kex::KexType::typeNode(row.type);
    ASSERT_NE(type, nullptr) << row.type;
    Ptr<Kex::GenericIf> value;
    auto const refused = refusal([&] { value = type->valueFromText(row.text); });
    EXPECT_EQ(refused.empty(), row.value != nullptr) << row.type << " " << row.text;
    if (value && row.value != nullptr) {
      EXPECT_EQ(value->text(), row.value) << row.type << " " << row.text;
      EXPECT_EQ(&value->type(), type);
    } else {
      EXPECT_EQ(refused,
                std::string("cannot convert '") + row.text + "' to " +
                    (row.type == std::string_view("Smbus::VornAddress")        ? "U64"
                     : row.type == std::string_view("Hardware::SmbusDeviceId") ? "U8"
                                                                               : row.type));
    }
  }
}

TEST(KexValues, vornAddressFieldsKeepToTheirBits) {
  struct {
    Kex::U8 device;
    Kex::U8 offset;
    std::uint16_t timeout;
    Kex::U64 encoded;
  } const rows[] = {
      {0, 0, 0, 0},       {0x58, 0xB0, 1000, 0x03e8b058}, {0x58, 0x99, 1000, 0x03e89958},
      {0x7f, 0, 0, 0x7f}, {0, 0xff, 0, 0xff00},           {0, 0, 0xffff, 0xffff0000},
  };
  for (auto const& row : rows) {
    // Also over fields that are set already; bits of no field stay as they are.
    for (Kex::U64 const before : {Kex::U64{0}, ~Kex::U64{0}}) {
      Smbus::VornAddress address(before);
      address.deviceIs(Smbus::U7(row.device));
      address.offsetIs(row.offset);
      address.busTimeoutIs(Hardware::SmbusTimeout(row.timeout));
      EXPECT_EQ(address.encoded(), row.encoded | (before & 0xffffffff00000080U));
      EXPECT_EQ(address.device(), row.device);
      EXPECT_EQ(address.offset(), row.offset);
      EXPECT_EQ(address.busTimeout(), row.timeout);
    }
  }
  try {
    Smbus::U7(0x80);
    ADD_FAILURE() << "0x80 taken";
  } catch (Kex::RangeException const& error) {
    EXPECT_STREQ(error.what(), "U7::value < 0 or > 0x7f not allowed");
  }
}

}  // namespace
