// The road of one supply, for a person.
#include "agent/report/Explain.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <string_view>
#include <vector>

#include "agent/base/Text.h"
#include "agent/report/FruBytes.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/base/Format.h"
#include "host/kex/type/KexType.h"

namespace Agent {

namespace {

using Hardware::PowerSupplySlot::Supply;
using Hardware::PowerSupplySlot::Verdict;
using Kex::format;
using Kex::U8;
using Bytes = std::vector<U8>;

constexpr std::size_t kColumns = 80;

/// Cuts `text` into pieces of at most `width` columns, after a blank where there is one; an escape
/// stays in one piece.
std::vector<std::string> pieces(std::string_view text, std::size_t width) {
  std::vector<std::string> cut(1);
  while (!text.empty()) {
    std::string_view const unit = text.substr(0, text.starts_with("\\x") ? 4 : 1);
    if (cut.back().size() + unit.size() > width) {
      std::size_t const blank = cut.back().rfind(' ');
      std::size_t const end = blank == std::string::npos ? cut.back().size() : blank + 1;
      std::string const word = cut.back().substr(end);
      cut.back().resize(end);
      cut.push_back(word);
    }
    cut.back() += unit;
    text.remove_prefix(unit.size());
  }
  return cut;
}

/// The text as it grows.
class Page {
 public:
  void heading(std::string const& title) { text_ += '\n' + title + '\n'; }
  /// A line; what does not fit goes on below column `indent`. `>>` marks the fault.
  void line(std::string const& content, bool isFault = false, std::size_t indent = 0) {
    std::string gutter = isFault ? ">> " : "   ";
    std::string_view rest = content;
    std::size_t lead = std::min(indent, rest.size());
    std::string start(rest.substr(0, lead));
    rest.remove_prefix(lead);
    for (std::string const& piece : pieces(rest, kColumns - 3 - indent)) {
      text_.append(gutter).append(start).append(piece) += '\n';
      gutter = "   ";
      start.assign(indent, ' ');
    }
  }
  std::string const& text() const { return text_; }

 private:
  std::string text_;
};

std::string str(Kex::String8 const& text) { return std::string(text.view()); }

U8 sumOf(std::span<U8 const> bytes) { return std::accumulate(bytes.begin(), bytes.end(), U8{0}); }

/// "0x12 stored, 0x34 computed" of an area whose last byte is the checksum.
std::string checksums(std::span<U8 const> area) {
  auto const computed = static_cast<U8>(-sumOf(area.first(area.size() - 1)));
  return str(format("0x%02X stored, 0x%02X computed", area.back(), computed));
}

constexpr std::size_t kValueColumn = 28;

/// "0xOFFSET  name  value".
void row(Page& page, std::size_t offset, char const* name, std::string const& value,
         bool isFault = false) {
  page.line(str(format("0x%02zX  %-22s", offset, name)) + value, isFault, kValueColumn);
}

void writeTransactions(Page& page, TransactionLog const& log, Supply const& supply) {
  auto const& records = log.records();
  page.heading(str(format("Transactions (%zu)", records.size())));
  bool const isReadFault =
      supply.verdict == Verdict::absent || supply.verdict == Verdict::unreadable;
  for (TransactionRecord const& record : records) {
    Smbus::Transaction const& transaction = record.transaction;
    std::string const written =
        transaction.write.length == 0 ? "" : ", wrote " + hex(transaction.write.view(), " ");
    page.line(
        str(format("%10.6f s  %s, 0x%02X/0x%02X%s: ", record.time, record.request.c_str(),
                   transaction.address.device(), transaction.address.offset(), written.c_str())) +
            (record.isOk ? "ok" : escaped(record.failure)),
        isReadFault && &record == &records.back(), 14);
    if (record.isOk) {
      page.line(std::string(14, ' ') + hex(record.read.view(), " "), false, 14);
    }
  }
}

void writeMfrId(Page& page, std::string_view mfrId, Supply const& supply) {
  bool const isFault = supply.verdict == Verdict::unsupportedManufacturer;
  page.heading("MFR_ID");
  page.line(inQuotes(mfrId) + (isFault ? " is not supported" : " is supported"), isFault);
}

/// Which field of a header is the one that it was rejected for; none for an accepted one.
enum class HeaderFault : U8 { none, version, checksum, productArea };

HeaderFault headerFault(std::span<U8 const> header) {
  if ((header[0] & 0x0f) != 1) {
    return HeaderFault::version;
  }
  if (sumOf(header) != 0) {
    return HeaderFault::checksum;
  }
  return header[4] == 0 ? HeaderFault::productArea : HeaderFault::none;
}

void writeHeader(Page& page, Bytes const& header) {
  constexpr char const* kAreas[] = {"internal use area", "chassis info area", "board info area",
                                    "product info area", "multirecord area"};
  page.heading("FRU common header");
  HeaderFault const fault = headerFault(header);
  row(page, 0, "format version", std::to_string(header[0] & 0x0f), fault == HeaderFault::version);
  for (std::size_t i = 0; i < std::size(kAreas); ++i) {
    std::size_t const offset = i + 1;
    unsigned const start = header[offset] * 8U;
    row(page, offset, kAreas[i], start == 0 ? "none" : str(format("at 0x%02X", start)),
        offset == 4 && fault == HeaderFault::productArea);
  }
  row(page, 7, "checksum", checksums(header), fault == HeaderFault::checksum);
}

char const* encodingName(Ipmi::FieldEncoding encoding) {
  switch (encoding) {
    case Ipmi::FieldEncoding::binary: return "binary";
    case Ipmi::FieldEncoding::bcdPlus: return "BCD plus";
    case Ipmi::FieldEncoding::sixBitAscii: return "6-bit";
    case Ipmi::FieldEncoding::eightBit: return "8-bit";
  }
  return "";
}

void writeField(Page& page, std::size_t start, Ipmi::AreaField const& field, char const* name) {
  if (field.offset == 0) {
    page.line(str(format("      %-22snot there", name)));
  } else {
    row(page, start + field.offset, name,
        str(format("%-8s %2u bytes  ", encodingName(field.encoding), field.length)) +
            inQuotes(field.text.view()));
  }
}

/// Fields that the maker added, from `at` on to the end mark.
void writeCustomFields(Page& page, std::size_t start, std::span<U8 const> area, std::size_t at) {
  constexpr U8 kEndMark = 0xC1;
  while (at < area.size() && area[at] != kEndMark && (area[at] & 0x3fU) < area.size() - at) {
    auto const encoding = static_cast<Ipmi::FieldEncoding>(area[at] >> 6);
    std::size_t const length = area[at] & 0x3fU;
    writeField(page, start,
               {.text = Ipmi::fieldText(encoding, area.subspan(at + 1, length)),
                .encoding = encoding,
                .offset = static_cast<U8>(at + 1),
                .length = static_cast<U8>(length)},
               "custom field");
    at += 1 + length;
  }
}

void writeFields(Page& page, std::size_t start, Bytes const& bytes) {
  constexpr char const* kNames[Ipmi::ProductInfoArea::kFields] = {
      "manufacturer name", "product name", "part number", "product version",
      "serial number",     "asset tag",    "FRU file ID"};
  auto const buffer = Kex::make<Hal::Buf>(0U);
  buffer->doAppend(bytes);
  Ipmi::ProductInfoArea const area(*buffer);
  for (U8 i = 0; i < Ipmi::ProductInfoArea::kFields; ++i) {
    writeField(page, start, area.field(static_cast<Ipmi::ProductInfoArea::Field>(i)), kNames[i]);
  }
  Ipmi::AreaField const& last = area.field(Ipmi::ProductInfoArea::kFruFileId);
  if (last.offset != 0) {
    writeCustomFields(page, start, bytes, std::size_t{last.offset} + last.length);
  }
}

void writeArea(Page& page, FruBytes const& fru, U8 start, Supply const& supply) {
  Bytes const head = fru.from(start, 2);
  if (head.size() < 2) {
    return;
  }
  std::size_t const length = head[1] * std::size_t{8};
  bool const isChecksumFault = supply.verdict == Verdict::invalidChecksum;
  Bytes const area = fru.from(start, length);
  page.heading("Product info area");
  row(page, start, "format version", std::to_string(head[0]),
      supply.verdict == Verdict::unsupportedVersion);
  row(page, start + 1U, "length", str(format("%u x 8 bytes", head[1])),
      isChecksumFault && length == 0);
  if (area.size() <= head.size()) {
    return;
  }
  row(page, start + 2U, "language", str(format("%u%s", area[2], area[2] == 0 ? " (English)" : "")));
  writeFields(page, start, area);
  if (area.size() == length) {
    row(page, start + length - 1, "checksum", checksums(area), isChecksumFault);
  }
}

void writeDescriptors(Page& page, Supply const& supply) {
  page.heading("Descriptors, in the order asked");
  auto const registry = Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  unsigned number = 0;
  for (auto one = registry->powerSupplyDescriptorIterator(); one; ++one) {
    bool const manages =
        supply.descriptor && one->fwkType().name() == Kex::Name(*supply.descriptor);
    page.line(str(format("%2u  %-36s", ++number, one->fwkType().name().charPtr())) +
              (manages ? "manages it" : "does not know it"));
    if (manages) {
      return;
    }
  }
  page.line(str(format("none of the %u knows it", number)), true);
}

}  // namespace

std::string explain(std::string const& source, TransactionLog const& log, Supply const& supply) {
  FruBytes fru;
  for (TransactionRecord const& record : log.records()) {
    fru.recordIs(record);
  }
  Page page;
  writeTransactions(page, log, supply);
  if (supply.mfrId) {
    writeMfrId(page, supply.mfrId->view(), supply);
  }
  Bytes const header = fru.from(0, Ipmi::CommonAreaHeader::kLength);
  if (header.size() == Ipmi::CommonAreaHeader::kLength) {
    writeHeader(page, header);
    if (headerFault(header) == HeaderFault::none) {
      writeArea(page, fru, static_cast<U8>(header[4] * 8), supply);
    }
  }
  if (supply.verdict == Verdict::identified || supply.verdict == Verdict::unrecognised) {
    writeDescriptors(page, supply);
  }
  page.heading("Verdict");
  page.line(verdictName(supply.verdict) +
            (supply.reason.empty() ? "" : ": " + escaped(supply.reason.view())));
  return source + '\n' + page.text() + '\n';
}

}  // namespace Agent
