// FRU records: every encoding and every way in which an area can be wrong.
#include <gtest/gtest.h>

#include <string>

#include "host/ipmi/IdpromContents.h"

namespace {

using Ipmi::ProductInfoArea;

/// Bytes written as hex digits, text between quotes as it stands.
std::string bytes(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\'') {
      for (++i; text[i] != '\''; ++i) {
        result += text[i];
      }
    } else if (text[i] != ' ') {
      result += static_cast<char>(std::stoi(std::string(text.substr(i++, 2)), nullptr, 16));
    }
  }
  return result;
}

/// A buffer that has exactly these bytes, so that reading past them is reading past the allocation.
Kex::Ptr<Hal::Buf> bufOf(std::string const& bytes) {
  auto buffer = Kex::make<Hal::Buf>(static_cast<Kex::U32>(bytes.size()));
  buffer->strIs(Kex::String8(std::string_view(bytes)));
  return buffer;
}

TEST(FruProductInfoArea, decodesItsFields) {
  struct {
    char const* area;
    std::string
        texts;  ///< of all fields; `~` stands for one that is not there, `+` begins a custom one
    unsigned serialOffset = 0;
    unsigned serialLength = 0;
  } const rows[] = {
      {"", "~|~|~|~|~|~|~"},
      {"01 01", "~|~|~|~|~|~|~"},
      {"01 01 19", "~|~|~|~|~|~|~"},
      {"01 01 19 C2'AB' C1 00", "AB|~|~|~|~|~|~"},
      {"01 01 19 C2'AB' 00", "AB|~|~|~|~|~|~"},
      // 8-bit and binary stay as they are; BCD plus and 6-bit ASCII become text.
      {"01 03 19 C2 41 E9 02'v1' C4'3-40' C0 C5'S' 09'N ' 20 C2'as' C2'id' C1",
       "A\xE9|v1|3-40||S\tN  |as|id", 16, 5},
      {"01 01 19 83 29 DC A6 82 29 DC 81 29 80 83 C0 0F FC C1", "IPMI|IP|I|| _ _|~|~", 14, 3},
      {"01 01 19 43 12 BC 3A 42 DE F9 C1", "12-.3 |???9|~|~|~|~|~"},
      {"01 01 19 40 80 C0 00 C0 80 40 C1", "||||||", 8, 0},
      // What ends the fields: nothing more, the end mark, an overrun.
      {"01 01 19 00 00 00 00 C2'SN' 00", "||||SN|~|~", 8, 2},
      {"01 01 19 00 00 00 00 C0 00", "|||||~|~", 8, 0},
      {"01 01 19 00 00 00 00 00 00 00 C4'more' C2'on' 80 C1 C1'x' 00", "||||||+more+on+", 8, 0},
      {"01 01 19 00 00 00 00 00 00 00 C4'more' C2'on'", "||||||+more", 8, 0},
      // The last byte is the checksum: what reaches into it overruns.
      {"01 01 19 00 00 00 00 C2'SN'", "||||~|~|~"},
      {"01 01 19 00 00 00 00 C0", "||||~|~|~"},
      {"01 01 19 00 00 00 00 C1 C2'SN'", "||||~|~|~"},
      {"01 01 19 C2'AB' C3'CD'", "AB|~|~|~|~|~|~"},
      {"01 01 19 FF 00 00 00 00 00 00", "~|~|~|~|~|~|~"},
  };
  for (auto const& row : rows) {
    std::string const stored = bytes(row.area);
    // Also from a larger buffer: what is beyond its length does not count.
    auto const wide = bufOf(stored + "\xC2ZZ\xC2ZZ\xC2ZZ\xC2ZZ\xC2ZZ\xC2ZZ\xC2ZZ");
    wide->lenIs(static_cast<Kex::U32>(stored.size()));
    for (auto const& buffer : {bufOf(stored), wide}) {
      auto const area = ProductInfoArea::ProductInfoAreaIs(buffer);
      std::string texts;
      for (unsigned i = 0; i < ProductInfoArea::kFields; ++i) {
        auto const& field = area->field(static_cast<ProductInfoArea::Field>(i));
        texts += (i == 0 ? "" : "|");
        texts += field.offset == 0 ? "~" : field.text.view();
        EXPECT_TRUE(field.offset != 0 || (field.length == 0 && field.text.empty())) << row.area;
      }
      for (auto const& field : area->customFields()) {
        (texts += '+') += field.text.view();
      }
      EXPECT_EQ(texts, row.texts) << row.area;
      EXPECT_EQ(area->serialNumberOffset(), row.serialOffset) << row.area;
      EXPECT_EQ(area->serialNumberLength(), row.serialLength) << row.area;
    }
  }
  EXPECT_EQ(ProductInfoArea(*bufOf(bytes("01 01 07"))).language(), 7);
}

TEST(FruProductInfoArea, isReadNoFurtherThanItsLengthWhateverItSays) {
  // Every type/length byte in an area of 8 bytes: a field is there whole, or not at all.
  for (unsigned typeLength = 0; typeLength < 256; ++typeLength) {
    std::string stored = bytes("01 01 00 00'abcd'");
    stored[3] = static_cast<char>(typeLength);
    ProductInfoArea const area(*bufOf(stored));
    auto const& first = area.field(ProductInfoArea::kManufacturerName);
    bool const isThere = (typeLength & 0x3f) <= 3 && typeLength != 0xC1;
    EXPECT_EQ(first.offset, isThere ? 4 : 0) << typeLength;
    EXPECT_EQ(first.length, isThere ? typeLength & 0x3f : 0) << typeLength;
  }
  // Every length up to 248 bytes and beyond what one-byte offsets can name: the fields before the
  // cut are as they were.
  std::string stored = bytes("01 1F 00");
  for (unsigned i = 0; i < ProductInfoArea::kFields; ++i) {
    stored += "\xE4" + std::string(36, static_cast<char>('a' + i));
  }
  for (std::size_t length = 0; length <= stored.size(); ++length) {
    ProductInfoArea const cut(*bufOf(stored.substr(0, length)));
    for (unsigned i = 0; i < ProductInfoArea::kFields; ++i) {
      std::size_t const end = 3 + 37 * (i + 1);
      auto const& field = cut.field(static_cast<ProductInfoArea::Field>(i));
      EXPECT_EQ(field.text.len(), end < length && end <= 255 ? 36U : 0U) << length << ' ' << i;
    }
  }
}

TEST(FruCommonAreaHeader, decodesVersionProductAreaAndZeroSum) {
  struct {
    std::string bytes;
    unsigned version;
    unsigned offset;
    bool isValid;
    int fault;  ///< offset of the byte at fault; -1 for an accepted header
    char const* why = "";
  } const rows[] = {
      {"", 0, 0, false, 0},
      {bytes("00"), 0, 0, true, 0},
      {bytes("01"), 1, 0, false, 7},
      {bytes("01 01 FE"), 1, 0, true, 4, "names no product info area"},
      {bytes("01 00 00 00"), 1, 0, false, 7},
      {bytes("01 00 00 00 01 00 00 FE"), 1, 8, true, -1},
      {bytes("F2 00 00 00 1F 00 00 CF"), 2, 248, false, 0, "version 2, not 1"},
      {bytes("01 00 00 00 00 00 00 FE"), 1, 0, false, 7, "is 0xFE, where 0xFF would be right"},
      {std::string(8, '\xFF'), 15, 248, false, 0, "0xFF throughout: the memory is erased"},
      {std::string(8, '\0'), 0, 0, true, 0, "0x00 throughout: the memory is empty"},
      {bytes("01 00 00 00 20 00 00 DF"), 1, 0, true, 4, "product info area at 0x100"},
      {bytes("01 00 00 00 21 00 00 DE"), 1, 8, true, -1},
      // What follows the eight bytes is not the header's.
      {bytes("01 00 00 00 01 00 00 FE FF"), 1, 8, true, -1},
      {std::string(256, '\1'), 1, 8, false, 7},
      {std::string(8, '\x20'), 0, 0, true, 0},
  };
  for (auto const& row : rows) {
    auto const buffer = bufOf(row.bytes);
    auto const header = Ipmi::CommonAreaHeader::CommonAreaHeaderIs(buffer);
    buffer->strIs("xxxxxxxx");  // the record is a copy
    EXPECT_EQ(header->checksumValid(), row.isValid) << &row - rows;
    EXPECT_EQ(header->ipmiVersion(), row.version) << &row - rows;
    EXPECT_EQ(header->productAreaOffset(), row.offset) << &row - rows;
    auto const fault = header->fault();
    EXPECT_EQ(fault ? static_cast<int>(fault->offset) : -1, row.fault) << &row - rows;
    std::string const text = fault ? fault->text.charPtr() : "";
    EXPECT_NE(text.find(row.why), std::string::npos) << text;
  }
}

TEST(FruProductInfoArea, tellsVersionLengthAndWhatIsWrong) {
  struct {
    std::string bytes;
    unsigned length;
    int fault;  ///< offset of the byte at fault; -1 for an accepted area
  } const rows[] = {
      {"", 0, 0},
      {bytes("02 01 FD"), 8, 0},
      {bytes("01 01 FE"), 8, -1},
      {bytes("01 01 FD"), 8, 2},
      {bytes("01 1F") + std::string(245, '\0') + "\xE0", 248, -1},
      {bytes("01 20"), 0, 1},
      {bytes("01 21 DE"), 8, -1},
      {bytes("01 FE") + std::string(300, '\0'), 240, 301},
      {std::string(256, '\1'), 8, -1},
      {std::string(255, '\1'), 8, 254},
  };
  for (auto const& row : rows) {
    ProductInfoArea const area(*bufOf(row.bytes));
    EXPECT_EQ(area.length(), row.length) << &row - rows;
    auto const fault = area.fault();
    EXPECT_EQ(fault ? static_cast<int>(fault->offset) : -1, row.fault) << &row - rows;
  }
}

}  // namespace
