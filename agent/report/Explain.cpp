// The road of one supply, for a person.
#include "agent/report/Explain.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "agent/base/Text.h"
#include "agent/models/ModelDescriptor.h"
#include "agent/models/NearMiss.h"
#include "agent/report/OtherRecords.h"
#include "agent/report/Page.h"
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

std::string str(Kex::String8 const& text) { return std::string(text.view()); }

/// Whether the supply's road ended at `stage`.
bool endedAt(Supply const& supply, Stage stage) { return rowOf(supply.verdict).stage == stage; }

Kex::Ptr<Hal::Buf> bufOf(Bytes const& bytes) {
  auto buffer = Kex::make<Hal::Buf>(0U);
  buffer->doAppend(bytes);
  return buffer;
}

/// What becomes of a number of bytes that does not fit in one byte.
std::string wrapped(unsigned number) {
  return number <= 0xFF ? "" : str(format(" (wraps to 0x%02X)", number & 0xFFU));
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
    page.row(offset, name, value, fault && fault->offset == offset);
  };
  tell(CommonAreaHeader::kVersion, "format version", std::to_string(header.ipmiVersion()));
  for (std::size_t offset = 1; char const* const area : kAreas) {
    unsigned const start = header.bytes()[offset] * 8U;
    tell(offset++, area, start == 0 ? "none" : str(format("at 0x%02X", start)) + wrapped(start));
  }
  tell(CommonAreaHeader::kChecksum, "checksum", checksums(header.bytes()));
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
    page.row(start + offset, name, value, fault && fault->offset == offset);
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
    page.field(start, field, ProductInfoArea::kFieldNames[i++]);
  }
  for (Ipmi::AreaField const& field : area.customFields()) {
    page.field(start, field, "custom field");
  }
  if (known == length) {
    tell(length - 1, "checksum", checksums(bytes));
  }
}

/// From which file the descriptor came, where it came from one.
std::string origin(Ipmi::SupportedPowerSupplyDescriptorBase const& descriptor) {
  auto const* const added = dynamic_cast<ModelDescriptor const*>(&descriptor);
  return added == nullptr ? "" : ": " + oneLine(added->model()->file);
}

/// What the descriptor would have known in the supply's stead, where that is near.
std::string nearest(NearMisses const& misses,
                    Ipmi::SupportedPowerSupplyDescriptorBase& descriptor) {
  auto const miss = misses.of(descriptor);
  return !miss
             ? ""
             : "; it would: " +
                   std::string(miss->field == Descriptors::KeyField::partNumber
                                   ? ProductInfoArea::kFieldNames[ProductInfoArea::kPartNumber]
                                   : ProductInfoArea::kFieldNames[ProductInfoArea::kProductName]) +
                   ' ' + inQuotes(miss->text) + " (" + miss->difference + ')';
}

void writeDescriptors(Page& page, Supply const& supply) {
  constexpr std::size_t kAnswerColumn = 40;
  page.heading("Descriptors, in the order asked");
  auto const registry = Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  NearMisses const misses(*supply.product);
  unsigned number = 0;
  for (auto one = registry->powerSupplyDescriptorIterator(); one; ++one) {
    bool const manages =
        supply.descriptor && one->fwkType().name() == Kex::Name(*supply.descriptor);
    page.line(str(format("%2u  %-36s", ++number, one->fwkType().name().charPtr())) +
                  (manages ? "manages it" : "does not know it" + nearest(misses, **one)) +
                  origin(**one),
              false, kAnswerColumn);
    if (manages) {
      return;
    }
  }
  page.line(str(format("none of the %u knows it", number)), true);
}

}  // namespace

std::string explain(std::string const& source, TransactionLog const& log, Supply const& supply,
                    FruBytes const& fru, std::optional<Hint> const& hint) {
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
      writeBoardArea(page, fru, header);
      writeArea(page, fru, header.productAreaOffset(), supply);
      writeMultirecords(page, fru, header);
    }
  }
  if (rowOf(supply.verdict).stage >= Stage::descriptors) {
    writeDescriptors(page, supply);
  }
  page.heading("Verdict");
  page.line(verdictName(supply.verdict) +
            (supply.reason.empty() ? "" : ": " + escaped(supply.reason.view())));
  if (hint) {
    page.line(hint->text);
  }
  return escaped(source) + '\n' + page.text() + '\n';
}

}  // namespace Agent
