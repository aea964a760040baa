// The FRU records that recognition does not use, for a person: board info area and multirecords.
#include "agent/report/OtherRecords.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "agent/base/Text.h"
#include "host/ipmi/Record.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

using Ipmi::CommonAreaHeader;
using Kex::format;
using Kex::U8;
using Bytes = std::span<U8 const>;

constexpr std::size_t kBoardArea = 3;
constexpr std::size_t kMultirecordArea = 5;
constexpr std::size_t kUnit = 8;

/// Start of the area that the header's byte `at` names; 0 where there is none, or where no one-byte
/// offset reaches it.
U8 startOf(CommonAreaHeader const& header, std::size_t at) {
  std::size_t const start = header.bytes()[at] * kUnit;
  return start > 0xFF ? U8{0} : static_cast<U8>(start);
}

/// Minutes since the beginning of 1996 as a date.
std::string dateOf(unsigned minutes) {
  using namespace std::chrono;
  if (minutes == 0) {
    return "not specified";
  }
  sys_days const day = floor<days>(sys_days(year(1996) / 1 / 1) + std::chrono::minutes(minutes));
  year_month_day const date(day);
  return format("%04d-%02u-%02u", int(date.year()), unsigned(date.month()), unsigned(date.day()))
      .charPtr();
}

/// How a number in a record is written.
struct Number {
  U8 offset;
  /// In bytes, the least significant first.
  U8 width;
  /// The bits of it that count.
  unsigned mask;
  char const* name;
  /// What one step is, and in which unit.
  double step;
  char const* unit;
  /// Whether it is signed, and whether all bits set mean that it is not specified.
  bool isSigned = false;
  bool canBeUnspecified = false;
};

constexpr Number kPowerSupply[] = {
    {0, 2, 0x0FFF, "capacity", 1, "W"},
    {2, 2, 0xFFFF, "peak power", 1, "VA", false, true},
    {4, 1, 0xFF, "inrush current", 1, "A", false, true},
    {5, 1, 0xFF, "inrush interval", 1, "ms"},
    {6, 2, 0xFFFF, "input 1, least", 0.01, "V"},
    {8, 2, 0xFFFF, "input 1, most", 0.01, "V"},
    {10, 2, 0xFFFF, "input 2, least", 0.01, "V"},
    {12, 2, 0xFFFF, "input 2, most", 0.01, "V"},
    {14, 1, 0xFF, "frequency, least", 1, "Hz"},
    {15, 1, 0xFF, "frequency, most", 1, "Hz"},
    {16, 1, 0xFF, "dropout tolerance", 1, "ms"},
    {18, 2, 0x0FFF, "peak capacity", 1, "W"},
    {21, 2, 0xFFFF, "combined output", 1, "W"},
    {23, 1, 0xFF, "tachometer threshold", 1, "rotations/s"},
};

constexpr Number kDcOutput[] = {
    {0, 1, 0x0F, "output number", 1, ""},
    {1, 2, 0xFFFF, "nominal voltage", 0.01, "V", true},
    {3, 2, 0xFFFF, "greatest deviation -", 0.01, "V", true},
    {5, 2, 0xFFFF, "greatest deviation +", 0.01, "V", true},
    {7, 2, 0xFFFF, "ripple and noise", 1, "mV"},
    {9, 2, 0xFFFF, "least current", 1, "mA"},
    {11, 2, 0xFFFF, "greatest current", 1, "mA"},
};

/// A bit in a record.
struct Flag {
  U8 offset;
  U8 bit;
  char const* name;
};

constexpr Flag kPowerSupplyFlags[] = {
    {17, 3, "hot swap"},
    {17, 2, "autoswitch"},
    {17, 1, "corrects power factor"},
    {17, 0, "predictive failure"},
};

constexpr Flag kDcOutputFlags[] = {{0, 7, "standby"}};

/// A type of multirecord that is decoded.
struct RecordType {
  U8 type;
  char const* name;
  std::span<Number const> numbers;
  std::span<Flag const> flags;
};

constexpr RecordType kTypes[] = {
    {0x00, "power supply information", kPowerSupply, kPowerSupplyFlags},
    {0x01, "DC output", kDcOutput, kDcOutputFlags},
};

std::string valueOf(Bytes data, Number const& number) {
  unsigned value = 0;
  for (std::size_t i = 0; i < number.width; ++i) {
    value |= unsigned{data[number.offset + i]} << 8 * i;
  }
  value &= number.mask;
  if (number.canBeUnspecified && value == number.mask) {
    return "not specified";
  }
  int const sign = number.isSigned && (value & 0x8000U) != 0 ? 0x10000 : 0;
  return format("%.10g %s", (static_cast<int>(value) - sign) * number.step, number.unit).charPtr();
}

void writeRecord(Page& page, std::size_t start, RecordType const& type, Bytes data) {
  for (Number const& number : type.numbers) {
    if (std::size_t{number.offset} + number.width <= data.size()) {
      page.row(start + number.offset, number.name, valueOf(data, number));
    }
  }
  for (Flag const& flag : type.flags) {
    if (flag.offset < data.size()) {
      page.row(start + flag.offset, flag.name,
               (unsigned{data[flag.offset]} >> flag.bit & 1U) != 0 ? "yes" : "no");
    }
  }
}

}  // namespace

void writeBoardArea(Page& page, FruBytes const& fru, CommonAreaHeader const& header) {
  constexpr std::size_t kFirstField = 6;
  constexpr std::array kNames = {"manufacturer", "product name", "serial number", "part number",
                                 "FRU file ID"};
  U8 const start = startOf(header, kBoardArea);
  auto const known = start == 0 ? std::vector<U8>() : fru.from(start, 0xFF);
  std::size_t const length = known.size() < 2 ? 0 : known[1] * kUnit;
  if (length == 0) {
    return;
  }
  page.heading("Board info area");
  if (length > known.size()) {
    page.line(format("of its %zu bytes %zu are known", length, known.size()).charPtr());
    return;
  }
  Bytes const area = Bytes(known).first(length);
  page.row(start, "format version", std::to_string(area[0] & 0x0FU));
  page.row(start + 1U, "length", format("%u x 8 bytes", area[1]).charPtr());
  page.row(start + 2U, "language", std::to_string(area[2]));
  page.row(start + 3U, "made on",
           dateOf(area[3] | unsigned{area[4]} << 8 | unsigned{area[5]} << 16));
  Ipmi::FieldCursor cursor(area.first(length - 1), kFirstField);
  std::size_t number = 0;
  for (Ipmi::AreaField field; cursor.read(field); ++number) {
    page.field(start, field, number < kNames.size() ? kNames[number] : "custom field");
  }
  page.row(start + length - 1, "checksum", checksums(area));
}

void writeMultirecords(Page& page, FruBytes const& fru, CommonAreaHeader const& header) {
  constexpr std::size_t kHeader = 5;
  constexpr unsigned kEndOfList = 0x80;
  U8 const start = startOf(header, kMultirecordArea);
  auto const known = start == 0 ? std::vector<U8>() : fru.from(start, 0x100U - start);
  Bytes rest(known);
  for (bool isLast = false; !isLast && rest.size() >= kHeader;) {
    std::size_t const offset = start + (known.size() - rest.size());
    Bytes const head = rest.first(kHeader);
    auto const* const type = std::ranges::find(kTypes, head[0], &RecordType::type);
    bool const isKnown = type != std::end(kTypes);
    page.heading(std::string("Multirecord: ") +
                 (isKnown ? type->name : format("type 0x%02X", head[0]).charPtr()));
    if (!Ipmi::isZeroSum(head)) {
      page.row(offset + 4, "header checksum", checksums(head));
      return;
    }
    std::size_t const length = head[2];
    Bytes const data = rest.subspan(kHeader, std::min(length, rest.size() - kHeader));
    page.row(offset + 2, "length", format("%zu bytes", length).charPtr());
    if (data.size() < length) {
      page.line(format("%zu of them are known", data.size()).charPtr());
      return;
    }
    if (isKnown) {
      writeRecord(page, offset + kHeader, *type, data);
    }
    page.row(offset + 3, "checksum",
             format("0x%02X stored, 0x%02X computed", head[3], Ipmi::checksumOf(data)).charPtr());
    isLast = (head[1] & kEndOfList) != 0;
    rest = rest.subspan(kHeader + length);
  }
}

}  // namespace Agent
