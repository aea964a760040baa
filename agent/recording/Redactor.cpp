// A recording without the serial numbers.
#include "agent/recording/Redactor.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "agent/base/JsonDocument.h"
#include "agent/base/JsonValue.h"
#include "agent/base/Text.h"
#include "host/detector/Detection.h"
#include "host/ipmi/CommonAreaHeader.h"

namespace Agent {

namespace {

using Area = Ipmi::ProductInfoArea;
using Json = JsonValue::Json;
using Kex::U8;

constexpr char const* kSerialNumber = "serialNumber";
constexpr char const* kTexts[] = {"manufacturerName", "productName", "partNumber", "productVersion",
                                  kSerialNumber};
constexpr char const* kIdentify = "identifySupply";
constexpr char const* kCheck = "checkSupply";
constexpr char const* kStart = "\"event\":\"start\"";

/// Of a process call that reads FRU data, the offset that it sends.
std::optional<U8> startOf(Smbus::Transaction const& transaction) {
  return transaction.write.length == 2 ? std::optional(transaction.write.bytes[1]) : std::nullopt;
}

/// The data bytes of an answer, as many as it has.
std::span<U8> dataOf(Smbus::Block& block) {
  std::size_t const length =
      block.length == 0 ? 0 : std::min(block.bytes[0] + std::size_t{1}, std::size_t{block.length});
  return std::span(block.bytes).first(length).subspan(std::min<std::size_t>(length, 1));
}

/// Nothing is told by what a block has behind its data.
void clearRest(Smbus::Block& block) {
  std::fill(block.bytes.begin() + 1 + static_cast<std::ptrdiff_t>(dataOf(block).size()),
            block.bytes.end(), U8{0});
}

Kex::Ptr<Hal::Buf> bufferOf(std::span<U8 const> bytes) {
  auto buffer = Kex::make<Hal::Buf>(static_cast<Kex::U32>(bytes.size()));
  buffer->doAppend(bytes);
  return buffer;
}

unsigned sumOf(std::span<U8 const> bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), 0U);
}

/// What `texts` of `product` are digested to where no descriptor knows them.
Kex::U32 digestOf(Kex::Ptr<Area> const& product) {
  PowerSupplyDetector::Supply supply;
  supply.verdict = Hardware::PowerSupplySlot::Verdict::unrecognised;
  supply.product = product;
  return PowerSupplyDetector::outcomeOf(supply).texts;
}

void replaceAll(std::string& text, std::string const& what, std::string const& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
}

/// As descriptors write a text into FDL: up to its first NUL.
std::string quoted(std::string const& text) {
  return '\'' + text.substr(0, text.find('\0')) + '\'';
}

}  // namespace

void Redactor::transactionIs(RecordedTransaction const& transaction) {
  TransactionRecord const& record = transaction.record;
  bool const isCheck = record.request == kCheck;
  if (isCheck || (hasTransactions_ &&
                  beginsDetection(Kex::Name(Kex::String8(record.request)), record.transaction))) {
    flush();
  }
  kept_.emplace_back(transaction);
  hasTransactions_ = true;
  if (isCheck) {
    redactCheck(std::get<RecordedTransaction>(kept_.back()).record);
    pass();
  }
}

void Redactor::lineIs(std::string const& line) {
  bool const isStart = line.find(kStart) != std::string::npos;
  kept_.emplace_back(line);
  if (!hasTransactions_ && !isStart) {
    flush();
  }
}

void Redactor::flush() {
  redactArea();
  pass();
}

void Redactor::pass() {
  hasTransactions_ = false;
  for (Entry& entry : kept_) {
    if (auto* const line = std::get_if<std::string>(&entry)) {
      redactLine(*line);
      out_.lineIs(*line);
    } else {
      out_.transactionIs(std::get<RecordedTransaction>(entry));
    }
  }
  kept_.clear();
}

void Redactor::redactArea() {
  Bytes area;
  std::vector<Piece> pieces;
  for (std::size_t i = 0; i < kept_.size(); ++i) {
    auto* const transaction = std::get_if<RecordedTransaction>(&kept_[i]);
    if (transaction == nullptr || !transaction->record.isOk ||
        !startOf(transaction->record.transaction)) {
      continue;
    }
    std::span<U8 const> const data = dataOf(transaction->record.read);
    if (transaction->record.request == kIdentify) {
      pieces.push_back({.entry = i, .position = area.size(), .count = data.size()});
      area.insert(area.end(), data.begin(), data.end());
    } else if (data.size() >= Ipmi::CommonAreaHeader::kLength) {
      area_ = Ipmi::CommonAreaHeader(*bufferOf(data)).productAreaOffset();
    }
  }
  Bytes const other = redacted(area);
  for (Piece const& piece : pieces) {
    Smbus::Block& block = std::get<RecordedTransaction>(kept_[piece.entry]).record.read;
    std::copy_n(other.begin() + static_cast<std::ptrdiff_t>(piece.position), piece.count,
                dataOf(block).begin());
    clearRest(block);
  }
}

Redactor::Bytes Redactor::redacted(Bytes const& area) {
  Bytes other = area;
  serialNumber_.reset();
  std::size_t const texts = Area::kLanguage + 1;
  if (area.size() <= texts) {
    return other;
  }
  auto const replace = [&](std::size_t offset, std::size_t length, Ipmi::FieldEncoding encoding) {
    std::ranges::copy(pseudonyms_.of(std::span(area).subspan(offset, length), encoding),
                      other.begin() + static_cast<std::ptrdiff_t>(offset));
  };
  if (area.size() < area[Area::kLength] * std::size_t{8}) {
    replace(texts, area.size() - texts, Ipmi::FieldEncoding::eightBit);
    return other;
  }
  auto const product = Area::ProductInfoAreaIs(bufferOf(area));
  Ipmi::AreaField const& serialNumber = product->field(Area::kSerialNumber);
  std::vector<Ipmi::AreaField> fields{serialNumber};
  if (!product->checksumValid()) {
    fields = product->customFields();
    fields.insert(fields.end(), product->fields().begin(), product->fields().end());
    std::size_t end = texts;
    for (Ipmi::AreaField const& field : fields) {
      end = std::max<std::size_t>(end, std::size_t{field.offset} + field.length);
    }
    // The byte at which the fields end says so; what is behind it nobody reads.
    if (end + 2 < area.size()) {
      replace(end + 1, area.size() - end - 2, Ipmi::FieldEncoding::eightBit);
    }
  }
  for (Ipmi::AreaField const& field : fields) {
    replace(field.offset, field.length, field.encoding);
  }
  other.back() = static_cast<U8>(other.back() + sumOf(area) - sumOf(other));
  if (product->checksumValid() && serialNumber.length != 0) {
    serialNumber_ = static_cast<U8>(area_ + serialNumber.offset);
    encoding_ = serialNumber.encoding;
    auto const pseudonym = Area::ProductInfoAreaIs(bufferOf(other));
    texts_[std::string(serialNumber.text.view())] = pseudonym->serialNumber().view();
    digests_[digestOf(product)] = digestOf(pseudonym);
  }
  return other;
}

void Redactor::redactCheck(TransactionRecord& record) const {
  std::optional<U8> const start = startOf(record.transaction);
  if (!record.isOk || !start || *start == area_) {
    return;
  }
  std::span<U8> const data = dataOf(record.read);
  auto const encoding = start == serialNumber_ ? encoding_ : Ipmi::FieldEncoding::eightBit;
  std::ranges::copy(pseudonyms_.of(data, encoding), data.begin());
  clearRest(record.read);
}

void Redactor::redactLine(std::string& line) const {
  Json json = parseJson(line);
  if (json.at("event") == "start") {
    for (char const* const key : {"toldTexts", "unconfirmedTexts"}) {
      constexpr Kex::U32 kMost = std::numeric_limits<Kex::U32>::max();
      auto const found = digests_.find(JsonValue(json, "").at(key).integer(0, kMost));
      if (found != digests_.end()) {
        json[key] = found->second;
      }
    }
  } else if (json.at("event") == "supply") {
    bool const isAll = json.at("verdict") == "invalidChecksum";
    for (char const* const key : kTexts) {
      if (json.at(key).is_null() || (!isAll && key != kSerialNumber)) {
        continue;
      }
      std::string const text = JsonValue(json, "").at(key).bytes();
      auto const found = texts_.find(text);
      std::string const other = found == texts_.end() ? pseudonyms_.of(text) : found->second;
      json[key] = latin1ToUtf8(other);
      if (key == kSerialNumber && json.at("fdl").is_string() && !text.empty()) {
        std::string fdl = json.at("fdl");
        replaceAll(fdl, latin1ToUtf8(quoted(text)), latin1ToUtf8(quoted(other)));
        json["fdl"] = fdl;
      }
    }
  }
  line = json.dump();
}

}  // namespace Agent
