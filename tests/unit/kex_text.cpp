// Values and references as text, both ways; bus addresses.
#include <gtest/gtest.h>

#include <span>
#include <string>

#include "host/hal/Buf.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/time/Clock.h"
#include "host/smbus/VornAddress.h"

namespace {

using Kex::Ptr;
using Kex::String8;

/// Reads a text and writes the value again.
using Read = String8 (*)(String8 const& text);

/// Both ways to read a `T`: as a value, and by the record of its type.
template <class T>
constexpr Read kReaders[] = {
    [](String8 const& text) { return Kex::holderOf(Kex::strepToValue<T>(text))->text(); },
    [](String8 const& text) { return Kex::typeOf<T>().valueFromText(text)->text(); },
};

TEST(KexValues, areReadByTheirType) {
  auto const top = Kex::make<Kex::Directory>("top");
  auto const odd = Kex::make<Kex::Directory>("a/b [c],(d){e}<f> \\g\th");
  auto const leaf = Kex::make<Kex::Clock>("leaf");
  Kex::root().memberIs(top), top->memberIs(odd), odd->memberIs(leaf);
  std::string const oddPath = "/top/a\\/b\\ \\[c\\]\\,\\(d\\)\\{e\\}\\<f\\>\\ \\\\g\\\th";
  std::string const leafPath = oddPath + "/leaf";
  EXPECT_EQ(Kex::strepToValue<Ptr<Kex::Clock>>(String8(leafPath)), leaf);

  std::span<Read const> const object = kReaders<Ptr<Kex::PtrInterface>>;
  std::span<Read const> const clock = kReaders<Ptr<Kex::Clock>>;
  std::span<Read const> const boolean = kReaders<bool>;
  std::span<Read const> const u8 = kReaders<Kex::U8>;
  std::span<Read const> const number = kReaders<double>;
  struct {
    std::span<Read const> readers;
    std::string text;
    std::string value;  ///< as written again, or what the refusal says
  } const rows[] = {
      {object, "/", "/"},
      {object, "/top", "/top"},
      {object, "/to\\p", "/top"},
      {object, oddPath, oddPath},
      {object, leafPath, leafPath},
      {object, "(null)", "(null)"},
      {object, "", "(null)"},
      {object, "/nowhere/else", "(null)"},
      {object, "/top/", "(null)"},
      {object, "//top", "(null)"},
      {object, "/top ", "junk at column 4 deserializing /top "},
      {object, "/top,/top", "junk at column 4 deserializing /top,/top"},
      {object, "/top\\", "junk at column 4 deserializing /top\\"},
      {object, "/ top", "junk at column 1 deserializing / top"},
      {object, "(null)x", "junk at column 6 deserializing (null)x"},
      {object, "null", "junk at column 0 deserializing null"},
      {object, "top", "junk at column 0 deserializing top"},
      {clock, "/top", "cannot convert '/top' to Kex::Clock"},
      {clock, "/top junk", "cannot convert '/top' to Kex::Clock"},
      {clock, leafPath, leafPath},
      {boolean, "true", "true"},
      {boolean, "0", "false"},
      {boolean, "yes", "cannot convert 'yes' to bool"},
      {u8, "255", "255"},
      {u8, "0xfF", "255"},
      {u8, "256", "cannot convert '256' to U8"},
      {u8, "-1", "cannot convert '-1' to U8"},
      {u8, " 1", "cannot convert ' 1' to U8"},
      {u8, "1 ", "cannot convert '1 ' to U8"},
      {u8, "", "cannot convert '' to U8"},
      {u8, "0x", "cannot convert '0x' to U8"},
      {kReaders<Kex::U32>, "4294967296", "cannot convert '4294967296' to U32"},
      {kReaders<Kex::U64>, "0xffffffffffffffff", "18446744073709551615"},
      {number, "0.3333333333333", "0.333333333333"},
      {number, "1e", "cannot convert '1e' to double"},
      {kReaders<String8>, "any [text]", "any [text]"},
      {kReaders<Kex::Name>, "any [text]", "any [text]"},
      {kReaders<Hardware::SmbusDeviceId>, "88", "0x58"},
      {kReaders<Smbus::VornAddress>, "0x3e8b058", "0x3e8b058"},
      {kReaders<Smbus::VornAddress>, "x", "cannot convert 'x' to U64"},
  };
  for (auto const& row : rows) {
    for (Read const read : row.readers) {
      try {
        EXPECT_EQ(read(String8(row.text)).view(), row.value) << row.text;
      } catch (Kex::Exception const& error) {
        EXPECT_EQ(error.what(), row.value);
        EXPECT_EQ(error.id(), 12U) << row.text;
        EXPECT_TRUE(error.isUserError()) << row.text;
      }
    }
  }
  EXPECT_EQ(Kex::valueToStrep(Kex::make<Hal::Buf>(1U)), "<Hal::Buf>");
  // Nothing that is there reads as nothing, or as an object without a place.
  EXPECT_EQ(Kex::valueToStrep(Kex::make<Kex::Clock>("(null)")), "\\(null\\)");
  EXPECT_EQ(Kex::valueToStrep(Kex::make<Kex::Clock>("<Hal::Buf>")), "\\<Hal::Buf\\>");
  Kex::root().memberDel("top");
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
