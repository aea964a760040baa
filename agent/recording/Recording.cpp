// The reader of recordings.
#include "agent/recording/Recording.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "agent/base/Error.h"
#include "agent/base/InputFile.h"
#include "agent/base/JsonDocument.h"
#include "agent/base/JsonObject.h"
#include "agent/base/Text.h"
#include "host/hardware/VornRequest.h"

namespace Agent {

namespace {

using Json = nlohmann::ordered_json;
using Smbus::ErrorKind;

/// Far above what a line can need; an endless one is not read to its end.
constexpr std::size_t kLongestLine = std::size_t{1} << 16;
/// In bytes: days of sixteen slots.
constexpr std::uintmax_t kLongestFile = std::uintmax_t{1} << 30;
constexpr char const* kFormat = "psu-agent recording";
constexpr unsigned kVersion = 1;
/// What the files of trace-cmd begin with.
constexpr std::string_view kBinaryTrace = "\x17\x08\x44tracing";

/// What a line tells of.
struct Event {
  std::string_view name;
  /// What it has besides time, slot and event.
  std::span<std::string_view const> keys;
};

constexpr std::string_view kTransaction = "transaction";
constexpr std::string_view kTransactionKeys[] = {"time",   "slot",    "event", "request",
                                                 "device", "command", "write", "readLength",
                                                 "read",   "status",  "error", "failure"};
constexpr std::string_view kSupplyKeys[] = {"source",       "verdict",    "reason",
                                            "mfrId",        "descriptor", "manufacturerName",
                                            "productName",  "partNumber", "productVersion",
                                            "serialNumber", "hwError",    "suspect",
                                            "transactions", "fdl",        "hint"};
constexpr std::string_view kStartKeys[] = {
    "source",      "pollInterval",     "reviewInterval", "told",   "toldTexts",
    "unconfirmed", "unconfirmedTexts", "mismatches",     "backOff"};
constexpr std::string_view kRepeated = "repeated";
constexpr std::string_view kRepeatedKeys[] = {"transactions"};
constexpr std::string_view kIncidentKeys[] = {"verdict", "cause"};
constexpr std::string_view kActKeys[] = {"action", "supply", "transactions"};
constexpr std::string_view kStopKeys[] = {"reason"};
constexpr Event kEvents[] = {{"supply", kSupplyKeys},    {Recording::kStart, kStartKeys},
                             {kRepeated, kRepeatedKeys}, {"incident", kIncidentKeys},
                             {"act", kActKeys},          {"stop", kStopKeys}};

struct Line {
  std::string_view text;
  /// Whether it has its line feed.
  bool isEnded;
};

/// The next line, which stands in `buffer`; none after the last. Throws a `UsageError`.
std::optional<Line> nextLine(std::istream& in, std::vector<char>& buffer) {
  buffer.resize(kLongestLine);
  in.getline(buffer.data(), kLongestLine);
  auto const length = static_cast<std::size_t>(in.gcount());
  if (in.bad()) {
    throw UsageError("cannot read: " + systemError(errno));
  }
  if (in.eof()) {
    return length == 0 ? std::nullopt
                       : std::optional(Line{.text = {buffer.data(), length}, .isEnded = false});
  }
  if (in.fail()) {
    throw UsageError("longer than " + std::to_string(kLongestLine) + " bytes");
  }
  return Line{.text = {buffer.data(), length - 1}, .isEnded = true};
}

void checkHeader(std::string_view line) {
  Json const json = parseJson(line);
  JsonValue const header(json, "");
  header.checkKeys({"format", "version"});
  if (JsonValue const format = header.at("format"); format.string() != kFormat) {
    format.refuse("this is no " + std::string(kFormat));
  }
  header.at("version").integer(kVersion, kVersion);
}

/// The bytes of `value`, at most `most`; none for null.
std::optional<Smbus::Block> block(JsonValue const& value, std::size_t most) {
  if (value.isNull()) {
    return std::nullopt;
  }
  std::string const text = value.string();
  Smbus::Block block;
  if (text.empty() || text.size() % 2 != 0 || text.size() > 2 * most) {
    value.refuse(std::to_string(text.size()) + " hexadecimal digits are not those of 1 to " +
                 std::to_string(most) + " bytes");
  }
  for (std::size_t i = 0; i < text.size(); i += 2) {
    char const* const end = text.data() + i + 2;
    auto const [stop, error] =
        std::from_chars(text.data() + i, end, block.bytes[block.length++], 16);
    if (error != std::errc() || stop != end) {
      value.refuse("\"" + text.substr(i, 2) + "\" is no byte in hexadecimal digits");
    }
  }
  return block;
}

/// The kind of `record`'s failure; told from its text where the recording has no kinds.
ErrorKind errorOf(JsonValue const& object, TransactionRecord const& record) {
  if (!object.has("error")) {
    bool const isNack = record.failure == Smbus::rowOf(ErrorKind::noAcknowledge).text;
    return isNack ? ErrorKind::noAcknowledge : ErrorKind::other;
  }
  JsonValue const error = object.at("error");
  if (error.isNull() != record.isOk) {
    error.refuse("the status says otherwise: an error has a kind when it is 2");
  }
  if (record.isOk) {
    return ErrorKind::other;
  }
  std::string const name = error.string();
  std::optional<ErrorKind> const kind = Smbus::errorKindOf(name);
  if (!kind) {
    error.refuse(inQuotes(name) + " is no kind of error");
  }
  return *kind;
}

double timeOf(JsonValue const& object) {
  return object.at("time").number(0, std::numeric_limits<double>::max());
}

TransactionRecord recordFrom(JsonValue const& object) {
  object.checkKeys(kTransactionKeys);
  TransactionRecord record;
  record.time = timeOf(object);
  record.request = object.at("request").string();
  Smbus::Transaction& transaction = record.transaction;
  transaction.address.deviceIs(
      Smbus::U7(static_cast<Kex::U8>(object.at("device").integer(0, 0x7F))));
  transaction.address.offsetIs(static_cast<Kex::U8>(object.at("command").integer(0, 0xFF)));
  transaction.write = block(object.at("write"), Smbus::kMaxBlock).value_or(Smbus::Block{});
  transaction.readLength =
      static_cast<Kex::U8>(object.at("readLength").integer(1, Smbus::kMaxBlock));
  auto const read = block(object.at("read"), transaction.readLength);
  record.isOk = object.at("status").integer(Kex::Request::kFailed, Kex::Request::kSucceeded) ==
                Kex::Request::kSucceeded;
  if (record.isOk != read.has_value()) {
    object.at("read").refuse("the status says otherwise: bytes are read when it is 3");
  }
  record.read = read.value_or(Smbus::Block{});
  if (JsonValue const failure = object.at("failure"); !failure.isNull()) {
    record.failure = failure.string();
  }
  record.error = errorOf(object, record);
  return record;
}

/// Throws a `UsageError` unless the line has what its event, which is no transaction, has.
void checkEvent(JsonValue const& object) {
  JsonValue const name = object.at("event");
  auto const* const event = std::ranges::find(kEvents, name.string(), &Event::name);
  if (event == std::ranges::end(kEvents)) {
    name.refuse(inQuotes(name.string()) + " is no event");
  }
  std::vector<std::string_view> keys = {"time", "slot", "event"};
  keys.insert(keys.end(), event->keys.begin(), event->keys.end());
  object.checkKeys(keys);
  for (std::string_view const key : keys) {
    static_cast<void>(object.at(std::string(key).c_str()));
  }
}

/// Repeats the transaction before as a line says.
void repeat(RecordedSlot& slot, JsonValue const& object) {
  if (slot.transactions.empty() || slot.transactions.back().repeats != 0) {
    object.at("event").refuse("there is no transaction before it that can be repeated");
  }
  RecordedTransaction& repeated = slot.transactions.back();
  repeated.repeats = object.at("transactions").integer(1, std::numeric_limits<Kex::U32>::max());
  repeated.until = timeOf(object);
}

}  // namespace

std::string Recording::header() {
  return JsonObject().add("format", kFormat).add("version", kVersion).text();
}

Recording::Recording(std::string const& file) : file_(file) {
  checkInputFile(file, kLongestFile);
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    throw Failure(file + ": cannot open: " + systemError(errno));
  }
  std::vector<char> buffer;
  std::size_t number = 1;
  try {
    auto line = nextLine(in, buffer);
    isTrace_ = line && !line->text.starts_with('{');
    if (isTrace_) {
      if (line->text.starts_with(kBinaryTrace)) {
        throw UsageError("a trace that is no text; trace-cmd report makes text of it");
      }
      KernelTrace trace;
      for (;; ++number) {
        if (!line) {
          break;
        }
        isCut_ = !line->isEnded;
        if (!isCut_) {
          trace.lineIs(line->text, number);
        }
        line = nextLine(in, buffer);
      }
      number = 1;
      slots_ = trace.end();
      return;
    }
    checkHeader(line.value_or(Line{.text = "", .isEnded = false}).text);
    for (++number;; ++number) {
      line = nextLine(in, buffer);
      if (!line) {
        break;
      }
      if (!line->isEnded && !Json::accept(line->text)) {
        isCut_ = true;
        break;
      }
      take(parseJson(line->text), number);
    }
  } catch (UsageError const& error) {
    throw Failure(file + ":" + std::to_string(number) + ": " + error.what());
  }
}

void Recording::take(JsonValue::Json json, std::size_t line) {
  JsonValue const object(json, "");
  std::string const event = object.at("event").string();
  RecordedSlot& slot = slots_[object.at("slot").string()];
  double const time = timeOf(object);
  if (time < slot.lastTime) {
    object.at("time").refuse("earlier than line " + std::to_string(slot.lastLine));
  }
  if (event == kTransaction) {
    slot.transactions.push_back({.record = recordFrom(object), .line = line});
  } else {
    checkEvent(object);
    if (event == kRepeated) {
      repeat(slot, object);
    } else if (event == kStart && slot.transactions.empty()) {
      slot.beginning = beginningFrom(object);
    }
    slot.events.push_back({.time = time, .event = event, .object = std::move(json), .line = line});
  }
  slot.lastTime = time;
  slot.lastLine = line;
}

RecordedSlot const& Recording::recordedSlot(std::string const& slot) const {
  RecordedSlot const* found = nullptr;
  std::string names;
  bool isOnly = true;
  for (auto const& [name, recorded] : slots_) {
    if (recorded.transactions.empty()) {
      continue;
    }
    isOnly = names.empty();
    names += (isOnly ? " " : ", ") + name;
    if (slot.empty() || slot == name) {
      found = &recorded;
    }
  }
  if (found != nullptr && (!slot.empty() || isOnly)) {
    return *found;
  }
  throw Failure(file_ + ": " +
                (names.empty()  ? "there is no transaction in it"
                 : slot.empty() ? "name one of its slots as FILE#SLOT:" + names
                                : "there is no slot " + slot + " in it, only" + names));
}

std::vector<RecordedTransaction> const& Recording::transactions(std::string const& slot) const {
  return recordedSlot(slot).transactions;
}

std::optional<Beginning> const& Recording::beginning(std::string const& slot) const {
  return recordedSlot(slot).beginning;
}

std::vector<std::string> Recording::doubts(std::string const& slot) const {
  std::vector<std::string> doubts;
  for (std::string const& doubt : recordedSlot(slot).doubts) {
    doubts.push_back(file_ + ":" + doubt);
  }
  return doubts;
}

}  // namespace Agent
