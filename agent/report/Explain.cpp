// The road of one supply, for a person.
#include "agent/report/Explain.h"

#include <algorithm>
#include <optional>
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

using Hardware::PowerSupplySlot::Stage;
using Ipmi::CommonAreaHeader;
using Ipmi::ProductInfoArea;
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

/// Whether the supply's road ended at `stage`.
bool endedAt(Supply const& supply, Stage stage) { return rowOf(supply.verdict).stage == stage; }

Kex::Ptr<Hal::Buf> bufOf(Bytes const& bytes) {
  auto buffer = Kex::make<Hal::Buf>(0U);
  buffer->doAppend(bytes);
  return buffer;
}

/// "0x12 stored, 0x34 computed" of an area whose last byte is the checksum.
std::string checksums(std::span<U8 const> area) {
  return str(format("0x%02X stored, 0x%02X computed", area.back(),
                    Ipmi::checksumOf(area.first(area.size() - 1))));
}

/// What becomes of a number of bytes that does not fit in one byte.
std::string wrapped(unsigned number) {
  return number <= 0xFF ? "" : str(format(" (wraps to 0x%02X)", number & 0xFFU));
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
  bool const isReadFault = endedAt(supply, Stage::address) || endedAt(supply, Stage::reading);
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
  bool const isFault = endedAt(supply, Stage::manufacturer);
  page.heading("MFR_ID");
  page.line(inQuotes(mfrId) + (isFault ? " is not supported" : " is supported"), isFault);
}

void writeHeader(Page& page, CommonAreaHeader const& header, Supply const& supply) {
  constexpr char const* kAreas[] = {"internal use area", "chassis info area", "board info area",
                                    "product info area", "multirecord area"};
  page.heading("FRU common header");
  auto const fault = endedAt(supply, Stage::header) ? header.fault() : std::nullopt;
  auto const tell = [&](std::size_t offset, char const* name, std::string const& value) {
    row(page, offset, name, value, fault && fault->offset == offset);
  };
  tell(CommonAreaHeader::kVersion, "format version", std::to_string(header.ipmiVersion()));
  for (std::size_t offset = 1; char const* const area : kAreas) {
    unsigned const start = header.bytes()[offset] * 8U;
    tell(offset++, area, start == 0 ? "none" : str(format("at 0x%02X", start)) + wrapped(start));
  }
  tell(CommonAreaHeader::kChecksum, "checksum", checksums(header.bytes()));
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

void writeArea(Page& page, FruBytes const& fru, U8 start, Supply const& supply) {
  Bytes bytes = fru.from(start, ProductInfoArea::kHeaderLength);
  if (bytes.size() < ProductInfoArea::kHeaderLength) {
    return;
  }
  std::size_t const length = std::max(std::size_t{ProductInfoArea(*bufOf(bytes)).length()},
                                      std::size_t{ProductInfoArea::kHeaderLength});
  bytes = fru.from(start, length);
  std::size_t const known = bytes.size();
  if (known < length) {
    bytes.push_back(0);  // for the checksum, so that what stands last is not taken for it
  }
  ProductInfoArea const area(*bufOf(bytes));
  auto const fault = endedAt(supply, Stage::area) ? area.fault() : std::nullopt;
  auto const tell = [&](std::size_t offset, char const* name, std::string const& value) {
    row(page, start + offset, name, value, fault && fault->offset == offset);
  };
  unsigned const units = bytes[ProductInfoArea::kLength];
  page.heading("Product info area");
  tell(ProductInfoArea::kVersion, "format version", std::to_string(area.version()));
  tell(ProductInfoArea::kLength, "length", str(format("%u x 8 bytes", units)) + wrapped(units * 8));
  if (known <= ProductInfoArea::kLanguage) {
    return;
  }
  tell(ProductInfoArea::kLanguage, "language",
       str(format("%u%s", area.language(), area.language() == 0 ? " (English)" : "")));
  for (std::size_t i = 0; Ipmi::AreaField const& field : area.fields()) {
    writeField(page, start, field, ProductInfoArea::kFieldNames[i++]);
  }
  for (Ipmi::AreaField const& field : area.customFields()) {
    writeField(page, start, field, "custom field");
  }
  if (known == length) {
    tell(length - 1, "checksum", checksums(bytes));
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
  Bytes const headerBytes = fru.from(0, CommonAreaHeader::kLength);
  if (headerBytes.size() == CommonAreaHeader::kLength) {
    CommonAreaHeader const header(*bufOf(headerBytes));
    writeHeader(page, header, supply);
    if (!header.fault()) {
      writeArea(page, fru, header.productAreaOffset(), supply);
    }
  }
  if (rowOf(supply.verdict).stage >= Stage::descriptors) {
    writeDescriptors(page, supply);
  }
  page.heading("Verdict");
  page.line(verdictName(supply.verdict) +
            (supply.reason.empty() ? "" : ": " + escaped(supply.reason.view())));
  return source + '\n' + page.text() + '\n';
}

}  // namespace Agent
