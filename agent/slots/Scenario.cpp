// Scenario files: which supplies are in which slots, and what happens to them.
#include "agent/slots/Scenario.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "agent/base/Error.h"
#include "agent/base/JsonPlace.h"
#include "agent/base/Text.h"
#include "agent/slots/FruImage.h"
#include "agent/slots/Publisher.h"

namespace Agent {

namespace {

/// A hundred years; beyond that, times in seconds lose their milliseconds.
constexpr double kLongest = 3.2e9;
constexpr unsigned kMostTransactions = 1'000'000'000;

class Reader {
 public:
  explicit Reader(std::filesystem::path folder) : folder_(std::move(folder)) {}

  Scenario scenario(JsonPlace const& place) {
    place.checkKeys({"duration", "slots"});
    Scenario scenario{.duration = place.at("duration").number(0, kLongest), .slots = {}};
    for (JsonPlace const& slot : place.at("slots").elements()) {
      scenario.slots.push_back(this->slot(slot, scenario.duration));
    }
    if (scenario.slots.empty()) {
      place.at("slots").refuse("there must be a slot");
    }
    return scenario;
  }

 private:
  ScenarioSlot slot(JsonPlace const& place, double duration) {
    place.checkKeys({"name", "supply", "events"});
    ScenarioSlot slot;
    slot.name = place.at("name").string();
    if (!isSlotName(slot.name)) {
      place.at("name").refuse(inQuotes(slot.name) + " is no name of a slot");
    }
    if (!names_.insert(slot.name).second) {
      place.at("name").refuse(inQuotes(slot.name) + " is taken by another slot");
    }
    slot.supply = supply(place.at("supply"));
    if (place.has("events")) {
      double earliest = 0;
      for (JsonPlace const& event : place.at("events").elements()) {
        earliest = readEvent(event, earliest, duration, slot);
      }
    }
    return slot;
  }

  /// Adds the event to `slot` and returns its time.
  double readEvent(JsonPlace const& place, double earliest, double duration, ScenarioSlot& slot) {
    double const at = place.at("at").number(earliest, duration);
    JsonPlace const actionPlace = place.at("action");
    std::string const action = actionPlace.string();
    bool const isRecording =
        slot.supply && std::holds_alternative<RecordedSupply>(slot.supply->kind);
    if (action == "remove" || action == "insert") {
      if (isRecording) {
        actionPlace.refuse("a recording stays in its slot");
      }
      slot.changes.push_back({.at = at, .supply = inserted(place, action)});
      return at;
    }
    for (FaultKind const& kind : faultKinds()) {
      if (kind.name != nullptr && action == kind.name) {
        slot.faults.push_back(fault(place, kind, at));
        return at;
      }
    }
    actionPlace.refuse(inQuotes(action) + " is no action");
  }

  std::optional<ScenarioSupply> inserted(JsonPlace const& place, std::string const& action) {
    if (action == "remove") {
      place.checkKeys({"at", "action"});
      return std::nullopt;
    }
    place.checkKeys({"at", "action", "supply"});
    std::optional<ScenarioSupply> inserted = supply(place.at("supply"));
    if (!inserted || !std::holds_alternative<SimulatedSupply>(inserted->kind)) {
      place.at("supply").refuse("only a supply with an image can be inserted");
    }
    return inserted;
  }

  static Fault fault(JsonPlace const& place, FaultKind const& kind, double at) {
    auto const key = [](char const* name) { return name == nullptr ? "action" : name; };
    place.checkKeys({"at", "action", "transactions", key(kind.byteKey), key(kind.valueKey)});
    Fault fault{.kind = kind.kind, .at = at};
    if (place.has("transactions")) {
      fault.transactions = place.at("transactions").integer(1, kMostTransactions);
    }
    if (kind.byteKey != nullptr) {
      fault.byte = static_cast<Kex::U8>(place.at(kind.byteKey).integer(0, Smbus::kMaxBlock - 1));
    }
    if (kind.valueKey != nullptr) {
      fault.value = static_cast<Kex::U8>(place.at(kind.valueKey).integer(kind.leastValue, 255));
    }
    return fault;
  }

  std::optional<ScenarioSupply> supply(JsonPlace const& place) {
    if (place.isNull()) {
      return std::nullopt;
    }
    place.checkKeys({"image", "mfrId", "replay"});
    if (place.has("replay")) {
      place.checkKeys({"replay"});
      std::string const text = place.at("replay").string();
      return ScenarioSupply{.text = text, .kind = RecordedSupply{(folder_ / text).string()}};
    }
    std::string const mfrId = place.has("mfrId") ? place.at("mfrId").bytes() : "EMERSON";
    if (mfrId.empty() || mfrId.size() > SimulatedSupply::kLongestMfrId) {
      place.at("mfrId").refuse(inQuotes(mfrId) + " has not 1 to 32 bytes");
    }
    std::string const text = place.at("image").string();
    return ScenarioSupply{.text = text, .kind = SimulatedSupply(image(place.at("image")), mfrId)};
  }

  std::vector<Kex::U8> const& image(JsonPlace const& place) {
    std::string const file = (folder_ / place.string()).string();
    auto const found = images_.find(file);
    if (found != images_.end()) {
      return found->second;
    }
    try {
      return images_[file] = readFruImage(file);
    } catch (Failure const& failure) {
      place.refuse(failure.what());
    }
  }

  std::filesystem::path folder_;
  std::set<std::string> names_;
  std::map<std::string, std::vector<Kex::U8>> images_;
};

}  // namespace

Scenario parseScenario(std::string_view text, std::filesystem::path const& folder) {
  JsonPlace::Json document;
  try {
    document = JsonPlace::Json::parse(text);
  } catch (JsonPlace::Json::exception const& error) {
    throw UsageError(oneLine(error.what()));
  }
  return Reader(folder).scenario(JsonPlace(document, ""));
}

Scenario readScenario(std::string const& file) {
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  std::string const text{std::istreambuf_iterator<char>(in), {}};
  if (!in) {
    throw Failure(file + ": " + (errno == 0 ? "cannot be read" : systemError(errno)));
  }
  try {
    return parseScenario(text, std::filesystem::path(file).parent_path());
  } catch (UsageError const& error) {
    throw UsageError(file + ": " + error.what());
  }
}

}  // namespace Agent
