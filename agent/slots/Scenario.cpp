// Scenario files: which supplies are in which slots, and what happens to them.
#include "agent/slots/Scenario.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "agent/base/Error.h"
#include "agent/base/InputFile.h"
#include "agent/base/JsonDocument.h"
#include "agent/base/Text.h"
#include "agent/publish/SlotName.h"
#include "agent/recording/ReplayTransport.h"
#include "agent/slots/FruImage.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

/// A hundred years; beyond that, times in seconds lose their milliseconds.
constexpr double kLongest = 3.2e9;
/// In bytes; far above what a person or a script writes.
constexpr std::uintmax_t kLongestFile = std::uintmax_t{64} << 20;
constexpr unsigned kMostTransactions = 1'000'000'000;

class Reader {
 public:
  explicit Reader(std::filesystem::path folder) : folder_(std::move(folder)) {}

  Scenario scenario(JsonValue const& value) {
    value.checkKeys({"duration", "slots"});
    Scenario scenario{.duration = value.at("duration").number(0.001, kLongest), .slots = {}};
    for (JsonValue const& slot : value.at("slots").elements()) {
      scenario.slots.push_back(this->slot(slot, scenario.duration));
    }
    if (scenario.slots.empty()) {
      value.at("slots").refuse("there must be a slot");
    }
    scenario.files = std::move(files_);
    return scenario;
  }

 private:
  ScenarioSlot slot(JsonValue const& value, double duration) {
    value.checkKeys({"name", "supply", "events"});
    ScenarioSlot slot;
    slot.name = value.at("name").string();
    if (!isSlotName(slot.name)) {
      value.at("name").refuse(inQuotes(slot.name) + " is no name of a slot");
    }
    if (isTakenName(slot.name)) {
      value.at("name").refuse(inQuotes(slot.name) + " is the name of something else");
    }
    if (!names_.insert(slot.name).second) {
      value.at("name").refuse(inQuotes(slot.name) + " is taken by another slot");
    }
    slot.supply = supply(value.at("supply"));
    if (value.has("events")) {
      double earliest = 0;
      for (JsonValue const& event : value.at("events").elements()) {
        earliest = readEvent(event, earliest, duration, slot);
      }
    }
    return slot;
  }

  /// Adds the event to `slot` and returns its time.
  double readEvent(JsonValue const& value, double earliest, double duration, ScenarioSlot& slot) {
    double const at = value.at("at").number(0, kLongest);
    if (at < earliest || at > duration) {
      value.at("at").refuse(std::string(
          Kex::format(at < earliest ? "%.15g is earlier than the event before it, at %.15g"
                                    : "%.15g is later than the end, the duration of %.15g",
                      at, at < earliest ? earliest : duration)
              .view()));
    }
    JsonValue const actionValue = value.at("action");
    std::string const action = actionValue.string();
    bool const isRecording =
        slot.supply && std::holds_alternative<RecordedSupply>(slot.supply->kind);
    if (action == "remove" || action == "insert") {
      if (isRecording) {
        actionValue.refuse("a recording stays in its slot");
      }
      slot.changes.push_back({.at = at, .supply = inserted(value, action)});
      return at;
    }
    for (FaultKind const& kind : faultKinds()) {
      if (kind.name != nullptr && action == kind.name) {
        slot.faults.push_back(fault(value, kind, at));
        return at;
      }
    }
    actionValue.refuse(inQuotes(action) + " is no action");
  }

  std::optional<ScenarioSupply> inserted(JsonValue const& value, std::string const& action) {
    if (action == "remove") {
      value.checkKeys({"at", "action"});
      return std::nullopt;
    }
    value.checkKeys({"at", "action", "supply"});
    std::optional<ScenarioSupply> inserted = supply(value.at("supply"));
    if (!inserted || !std::holds_alternative<SimulatedSupply>(inserted->kind)) {
      value.at("supply").refuse("only a supply with an image can be inserted");
    }
    return inserted;
  }

  static Fault fault(JsonValue const& value, FaultKind const& kind, double at) {
    auto const key = [](char const* name) { return name == nullptr ? "action" : name; };
    value.checkKeys({"at", "action", "transactions", key(kind.byteKey), key(kind.valueKey)});
    Fault fault{.kind = kind.kind, .at = at};
    if (value.has("transactions")) {
      fault.transactions = value.at("transactions").integer(1, kMostTransactions);
    }
    if (kind.byteKey != nullptr) {
      fault.byte = static_cast<Kex::U8>(value.at(kind.byteKey).integer(0, Smbus::kMaxBlock - 1));
    }
    if (kind.valueKey != nullptr) {
      fault.value = static_cast<Kex::U8>(value.at(kind.valueKey).integer(kind.leastValue, 255));
    }
    return fault;
  }

  std::optional<ScenarioSupply> supply(JsonValue const& value) {
    if (value.isNull()) {
      return std::nullopt;
    }
    value.checkKeys({"image", "mfrId", "replay"});
    if (value.has("replay")) {
      value.checkKeys({"replay"});
      std::string const text = pathIn(value.at("replay"));
      std::string const target = (folder_ / text).string();
      files_.push_back(ReplayTarget(target).file);
      return ScenarioSupply{.text = text, .kind = RecordedSupply{target}};
    }
    std::string const mfrId = value.has("mfrId") ? value.at("mfrId").bytes() : "EMERSON";
    if (mfrId.empty() || mfrId.size() > SimulatedSupply::kLongestMfrId) {
      value.at("mfrId").refuse(inQuotes(mfrId) + " has not 1 to 32 bytes");
    }
    std::string const text = pathIn(value.at("image"));
    return ScenarioSupply{.text = text, .kind = SimulatedSupply(image(value.at("image")), mfrId)};
  }

  /// The name of a file.
  static std::string pathIn(JsonValue const& value) {
    std::string text = value.string();
    if (text.empty() || text.find('\0') != std::string::npos) {
      value.refuse(inQuotes(text) + " names no file");
    }
    return text;
  }

  std::vector<Kex::U8> const& image(JsonValue const& value) {
    std::string const file = (folder_ / value.string()).string();
    auto const found = images_.find(file);
    if (found != images_.end()) {
      return found->second;
    }
    files_.push_back(file);
    try {
      return images_[file] = readFruImage(file);
    } catch (Failure const& failure) {
      throw Failure(value.name() + ": " + failure.what());
    }
  }

  std::filesystem::path folder_;
  std::set<std::string> names_;
  std::vector<std::string> files_;
  std::map<std::string, std::vector<Kex::U8>> images_;
};

}  // namespace

Scenario parseScenario(std::string_view text, std::filesystem::path const& folder) {
  JsonValue::Json const document = parseJson(text);
  return Reader(folder).scenario(JsonValue(document, ""));
}

Scenario readScenario(std::string const& file) {
  checkInputFile(file, kLongestFile);
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  std::string const text{std::istreambuf_iterator<char>(in), {}};
  if (!in) {
    throw Failure(file + ": " + (errno == 0 ? "cannot be read" : systemError(errno)));
  }
  try {
    Scenario scenario = parseScenario(text, std::filesystem::path(file).parent_path());
    scenario.files.push_back(file);
    return scenario;
  } catch (UsageError const& error) {
    throw UsageError(file + ": " + error.what());
  } catch (Failure const& failure) {
    throw Failure(file + ": " + failure.what());
  }
}

}  // namespace Agent
