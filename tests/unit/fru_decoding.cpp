// FRU records: every encoding and every way in which an area can be wrong.
#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <string>
#include <vector>

#include "host/ipmi/IdpromContents.h"

namespace {

using Ipmi::ProductInfoArea;
using Kex::U8;
using Bytes = std::string;

/// A buffer that has exactly these bytes, so that reading past them is reading past the allocation.
Kex::Ptr<Hal::Buf> bufOf(Bytes const& bytes) {
  auto buffer = Kex::make<Hal::Buf>(static_cast<Kex::U32>(bytes.size()));
  buffer->strIs(Kex::String8(std::string_view(bytes)));
  return buffer;
}

/// The texts of all fields; `~` stands for a field that is not there.
std::string textsOf(ProductInfoArea const& area) {
  std::string texts;
  for (unsigned i = 0; i < ProductInfoArea::kFields; ++i) {
    auto const& field = area.field(static_cast<ProductInfoArea::Field>(i));
    texts += (i == 0 ? "" : "|");
    texts += field.offset == 0 ? "~" : field.text.view();
    EXPECT_TRUE(field.offset != 0 || (field.length == 0 && field.text.empty()));
  }
  return texts;
}

template <std::size_t N>
Bytes bytes(char const (&literal)[N]) {
  return {literal, N - 1};
}

TEST(FruProductInfoArea, decodesItsFields) {
  Bytes const head = bytes("\1\x1f\x19");
  Bytes const six = head + bytes("\0\0\0\0\0\0");  // manufacturer to asset tag empty, and file id
  struct {
    char const* name;
    Bytes area;
    char const* texts;
    unsigned serialOffset;
    unsigned serialLength;
  } const rows[] = {
      {"no byte", "", "~|~|~|~|~|~|~", 0, 0},
      {"two bytes", bytes("\1\1"), "~|~|~|~|~|~|~", 0, 0},
      {"the head alone", head, "~|~|~|~|~|~|~", 0, 0},
      {"eight bytes",
       head + bytes("\xC2"
                    "AB\xC1\0"),
       "AB|~|~|~|~|~|~", 0, 0},
      {"8-bit and binary stay as they are",
       head + bytes("\xC3"
                    "A\xE9 \x03"
                    "a\0b\xC4"
                    "3-40\xC2"
                    "v1\xC5"
                    "S\0 N \xC2"
                    "as\xC2"
                    "id\xC1"),
       nullptr, 17, 5},
      {"6-bit ASCII", head + bytes("\x83\x29\xDC\xA6\x82\x29\xDC\x81\x29\x80\xC1"),
       "IPMI|IP|I||~|~|~", 0, 0},
      {"6-bit ASCII, first and last codes", head + bytes("\x83\xC0\x0F\xFC\xC1"),
       " _ _|~|~|~|~|~|~", 0, 0},
      {"BCD plus", head + bytes("\x43\x12\xBC\x3A\x42\xDE\xF9\xC1"), "12-.3 |???9|~|~|~|~|~", 0, 0},
      {"zero-length fields of every encoding", head + bytes("\x40\x80\xC0\x00\xC0\x80\x40\xC1"),
       "||||||", 8, 0},
      {"no end mark",
       head + bytes("\0\0\0\0\xC2"
                    "SN"),
       "||||SN|~|~", 8, 2},
      {"fields after the seventh", six + bytes("\0\xC4more\xC1"), "||||||", 8, 0},
      {"the end mark before the serial number",
       head + bytes("\0\0\0\0\xC1\xC2"
                    "SN"),
       "||||~|~|~", 0, 0},
      {"a field that overruns by one",
       head + bytes("\xC2"
                    "AB\xC3"
                    "CD"),
       "AB|~|~|~|~|~|~", 0, 0},
      {"nothing after an overrun", head + bytes("\xFF\0\0\0\0\0\0"), "~|~|~|~|~|~|~", 0, 0},
      {"a field that ends with the area",
       head + bytes("\xC2"
                    "AB\xC2"
                    "CD"),
       "AB|CD|~|~|~|~|~", 0, 0},
      {"an empty field at the very end", head + bytes("\0\0\0\0\xC0"), "|||||~|~", 8, 0},
  };
  for (auto const& row : rows) {
    auto const area = ProductInfoArea::ProductInfoAreaIs(bufOf(row.area));
    Bytes const texts =
        row.texts != nullptr ? row.texts : bytes("A\xE9 |a\0b|3-40|v1|S\0 N |as|id");
    EXPECT_EQ(textsOf(*area), texts) << row.name;
    EXPECT_EQ(area->serialNumberOffset(), row.serialOffset) << row.name;
    EXPECT_EQ(area->serialNumberLength(), row.serialLength) << row.name;
    // The same bytes in a larger buffer: what is beyond its length does not count.
    auto const wide = bufOf(row.area + "\xC2ZZ\xC2ZZ\xC2ZZ\xC2ZZ\xC2ZZ\xC2ZZ\xC2ZZ");
    wide->lenIs(static_cast<Kex::U32>(row.area.size()));
    EXPECT_EQ(textsOf(ProductInfoArea(*wide)), texts) << row.name;
  }
}

TEST(FruProductInfoArea, namesItsFieldsInOrder) {
  ProductInfoArea const area(
      *bufOf(bytes("\1\1\x07\xC2"
                   "mf\xC2"
                   "pn\xC2"
                   "no\xC2"
                   "vs\xC2"
                   "sn")));
  EXPECT_EQ(area.manufacturerName(), "mf");
  EXPECT_EQ(area.productName(), "pn");
  EXPECT_EQ(area.partNumber(), "no");
  EXPECT_EQ(area.productVersion(), "vs");
  EXPECT_EQ(area.serialNumber(), "sn");
  EXPECT_EQ(area.language(), 7);
}

TEST(FruProductInfoArea, isReadNoFurtherThanItsLengthWhateverItSays) {
  // Every type/length byte in an area of 8 bytes: a field is there whole, or not at all.
  for (unsigned typeLength = 0; typeLength < 256; ++typeLength) {
    Bytes area = bytes("\1\1\0?abcd");
    area[3] = static_cast<char>(typeLength);
    auto const& first = ProductInfoArea(*bufOf(area)).field(ProductInfoArea::kManufacturerName);
    bool const isThere = (typeLength & 0x3f) <= 4 && typeLength != 0xC1;
    EXPECT_EQ(first.offset, isThere ? 4 : 0) << typeLength;
    EXPECT_EQ(first.length, isThere ? typeLength & 0x3f : 0) << typeLength;
  }
  // Every length of a full area of 248 bytes: the fields before the cut are as they were.
  Bytes area = bytes("\1\x1f\0");
  for (unsigned i = 0; i < ProductInfoArea::kFields; ++i) {
    area += "\xDF" + Bytes(31, static_cast<char>('a' + i));
  }
  area.resize(248);
  for (unsigned length = 0; length <= area.size(); ++length) {
    ProductInfoArea const cut(*bufOf(area.substr(0, length)));
    for (unsigned i = 0; i < ProductInfoArea::kFields; ++i) {
      auto const& field = cut.field(static_cast<ProductInfoArea::Field>(i));
      EXPECT_EQ(field.text.len(), length >= 3 + 32 * (i + 1) ? 31U : 0U) << length << ' ' << i;
    }
  }
  // Offsets are one byte wide: of a larger buffer what they cannot name is left out.
  ProductInfoArea const huge(*bufOf(bytes("\1\xff\0") + "\xFF" + Bytes(63, 'a') + "\xFF" +
                                    Bytes(63, 'b') + "\xFF" + Bytes(63, 'c') + "\xFB" +
                                    Bytes(59, 'd') + "\xC4" + Bytes(900, 'e')));
  EXPECT_EQ(huge.productVersion().len(), 59U);
  EXPECT_EQ(huge.serialNumberOffset(), 0U);
}

TEST(FruProductInfoArea, checksumIsTheZeroSumOfAllItsBytes) {
  struct {
    Bytes bytes;
    bool isValid;
  } const rows[] = {
      {"", false},
      {bytes("\0"), true},
      {bytes("\1"), false},
      {"\x80\x80", true},
      {bytes("\1\1\xFE"), true},
      {Bytes(256, '\1'), true},
      {Bytes(255, '\1'), false},
      {Bytes(248, '\xff') + bytes("\xf8"), true},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(ProductInfoArea(*bufOf(row.bytes)).checksumValid(), row.isValid) << row.bytes.size();
    EXPECT_EQ(Ipmi::CommonAreaHeader(*bufOf(row.bytes)).checksumValid(), row.isValid);
  }
}

TEST(FruCommonAreaHeader, decodesVersionAndProductArea) {
  struct {
    Bytes bytes;
    unsigned version;
    unsigned offset;
    bool isValid;
  } const rows[] = {
      {bytes("\1\0\0\0\1\0\0\xFE"), 1, 8, true},
      {bytes("\xF1\0\0\0\1\0\0\x0E"), 1, 8, true},
      {bytes("\x12\0\0\0\x1F\0\0\xCF"), 2, 248, true},
      {bytes("\1\0\0\0\x20\0\0\xDF"), 1, 0, true},
      {bytes("\1\0\0\0\x21\0\0\xDE"), 1, 8, true},
      {bytes("\1\0\0\0\1\0\0\xFF"), 1, 8, false},
      {bytes("\1"), 1, 0, false},
      {"", 0, 0, false},
  };
  for (auto const& row : rows) {
    auto const buffer = bufOf(row.bytes);
    auto const header = Ipmi::CommonAreaHeader::CommonAreaHeaderIs(buffer);
    buffer->strIs(Kex::String8(std::string_view(Bytes(8, '\x7f'))));  // the record is a copy
    EXPECT_EQ(header->ipmiVersion(), row.version);
    EXPECT_EQ(header->productAreaOffset(), row.offset);
    EXPECT_EQ(header->checksumValid(), row.isValid);
  }
}

}  // namespace
