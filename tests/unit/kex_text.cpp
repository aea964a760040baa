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
using Kex::String8;
using Any = Ptr<Kex::PtrInterface>;

class KexText : public testing::Test {
 protected:
  KexText() {
    Kex::root().memberIs(top);
    top->memberIs(odd);
    odd->memberIs(leaf);
  }
  ~KexText() override { Kex::root().memberDel("top"); }

  Ptr<Directory> top = Kex::make<Directory>("top");
  Ptr<Directory> odd = Kex::make<Directory>("a/b [c],(d){e} \\f\tg");
  Ptr<Kex::Clock> leaf = Kex::make<Kex::Clock>("leaf");
};

TEST_F(KexText, referencesAreReadAsTheyAreWritten) {
  std::string const oddPath = "/top/a\\/b\\ \\[c\\]\\,\\(d\\)\\{e\\}\\ \\\\f\\\tg";
  Any const root(&Kex::root());
  struct {
    std::string text;
    Any object;
    std::string refused;
    bool isWritten = false;  ///< the text is also what the object is written as
    bool isForClock = false;
  } const rows[] = {
      {"/", root, "", true},
      {"/top", top, "", true},
      {oddPath, odd, "", true},
      {oddPath + "/leaf", leaf, "", true},
      {"null", nullptr, "", true},
      {"/to\\p", top, ""},
      {"", nullptr, ""},
      {"/nowhere/else", nullptr, ""},
      {"/top/", nullptr, ""},
      {"//top", nullptr, ""},
      {"/top ", nullptr, "junk at column 4 deserializing /top "},
      {"/top,/top", nullptr, "junk at column 4 deserializing /top,/top"},
      {"/top\\", nullptr, "junk at column 4 deserializing /top\\"},
      {"/ top", nullptr, "junk at column 1 deserializing / top"},
      {"nullx", nullptr, "junk at column 4 deserializing nullx"},
      {"top", nullptr, "junk at column 0 deserializing top"},
      {"/top", nullptr, "cannot convert '/top' to Kex::Clock", false, true},
      {"/top junk", nullptr, "cannot convert '/top' to Kex::Clock", false, true},
      {oddPath + "/leaf", leaf, "", false, true},
  };
  for (auto const& row : rows) {
    std::string refused;
    try {
      EXPECT_EQ(row.isForClock ? Any(Kex::strepToValue<Ptr<Kex::Clock>>(String8(row.text)))
                               : Kex::strepToValue<Any>(String8(row.text)),
                row.object)
          << row.text;
    } catch (Kex::Exception const& error) {
      refused = error.what();
      EXPECT_EQ(error.id(), 12U) << row.text;
      EXPECT_TRUE(error.isUserError()) << row.text;
    }
    EXPECT_EQ(refused, row.refused) << row.text;
    if (row.isWritten) {
      EXPECT_EQ(Kex::valueToStrep(row.object).view(), row.text);
    }
  }
  EXPECT_EQ(Kex::valueToStrep(Kex::make<Hal::Buf>(1U)), "<Hal::Buf>");
  odd->memberIs(Kex::make<Kex::Clock>("leaf"));  // in place of the one that was there
  EXPECT_EQ(leaf->parent(), nullptr);
  EXPECT_EQ(odd->memberNames().size(), 1U);
}

TEST(KexValues, areReadByTheirType) {
  using Read = std::string (*)(String8 const& text);
  auto const as = []<class T>(T) -> Read {
    return [](String8 const& text) {
      return std::string(Kex::typeOf<T>().valueFromText(text)->text().view());
    };
  };
  Read const u8 = as(Kex::U8{});
  Read const address = as(Smbus::VornAddress());
  struct {
    Read read;
    char const* text;
    char const* value;  ///< as written again, or what the refusal says
  } const rows[] = {
      {as(true), "true", "true"},
      {as(true), "0", "false"},
      {as(true), "yes", "cannot convert 'yes' to bool"},
      {u8, "255", "255"},
      {u8, "0xfF", "255"},
      {u8, "256", "cannot convert '256' to U8"},
      {u8, "-1", "cannot convert '-1' to U8"},
      {u8, " 1", "cannot convert ' 1' to U8"},
      {u8, "1 ", "cannot convert '1 ' to U8"},
      {u8, "", "cannot convert '' to U8"},
      {u8, "0x", "cannot convert '0x' to U8"},
      {as(Kex::U32{}), "4294967296", "cannot convert '4294967296' to U32"},
      {as(Kex::U64{}), "0xffffffffffffffff", "18446744073709551615"},
      {as(0.0), "0.3333333333333", "0.333333333333"},
      {as(0.0), "1e", "cannot convert '1e' to double"},
      {as(String8()), "any [text]", "any [text]"},
      {as(Kex::Name()), "any [text]", "any [text]"},
      {as(Hardware::SmbusDeviceId()), "88", "0x58"},
      {address, "0x3e8b058", "0x3e8b058"},
      {address, "x", "cannot convert 'x' to U64"},
  };
  for (auto const& row : rows) {
    std::string value;
    try {
      value = row.read(row.text);
    } catch (Kex::Exception const& error) {
      value = error.what();
      EXPECT_EQ(error.id(), 12U) << row.text;
    }
    EXPECT_EQ(value, row.value) << row.text;
  }
}

TEST(SmbusVornAddress, fieldsKeepToTheirBits) {
  // Also over fields that are set already; bits of no field stay as they are.
  for (Kex::U64 const before : {Kex::U64{0}, ~Kex::U64{0}}) {
    Kex::U64 const others = before & 0xffffffff00000080U;
    Smbus::VornAddress address(before);
    address.deviceIs(Smbus::U7(0x58));
    EXPECT_EQ(address.encoded(), (before & ~Kex::U64{0x7f}) | 0x58);
    address.offsetIs(0xB0);
    address.busTimeoutIs(Hardware::SmbusTimeout(1000));
    EXPECT_EQ(address.encoded(), others | 0x03e8b058U);
    EXPECT_EQ(address.device(), 0x58);
    EXPECT_EQ(address.offset(), 0xB0);
    EXPECT_EQ(address.busTimeout(), 1000);
  }
}

}  // namespace
