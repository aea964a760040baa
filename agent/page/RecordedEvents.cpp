// What a recording tells of a slot besides its transactions, put into its lane.
#include "agent/page/RecordedEvents.h"

#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "agent/base/Error.h"
#include "agent/base/JsonValue.h"

namespace Agent {

namespace {

constexpr char const* kTextsBefore[] = {
    "source",           "verdict",     "reason",     "hint",           "mfrId",       "descriptor",
    "manufacturerName", "productName", "partNumber", "productVersion", "serialNumber"};

std::optional<std::string> textOf(JsonValue const& object, char const* key) {
  JsonValue const value = object.at(key);
  return value.isNull() ? std::nullopt : std::optional(value.string());
}

std::optional<bool> truthOf(JsonValue::Json const& object, char const* key) {
  JsonValue::Json const& value = object.at(key);
  if (!value.is_null() && !value.is_boolean()) {
    JsonValue(value, key).refuse(value.dump() + " is neither true nor false");
  }
  return value.is_null() ? std::nullopt : std::optional(value.get<bool>());
}

LaneSupply supplyFrom(JsonValue::Json const& json) {
  JsonValue const object(json, "");
  LaneSupply supply{.verdict = object.at("verdict").string(),
                    .serialNumber = textOf(object, "serialNumber").value_or(""),
                    .fdl = textOf(object, "fdl").value_or("")};
  for (char const* const key : kTextsBefore) {
    supply.members.add(key, textOf(object, key));
  }
  std::vector<std::string> suspects;
  for (JsonValue const& suspect : object.at("suspect").elements()) {
    suspects.push_back(suspect.string());
  }
  supply.members.add("hwError", truthOf(json, "hwError"))
      .add("suspect", std::vector<std::string_view>(suspects.begin(), suspects.end()))
      .add("transactions",
           object.at("transactions").integer(0, std::numeric_limits<unsigned>::max()))
      .add("fdl", textOf(object, "fdl"));
  return supply;
}

std::string actFrom(JsonValue const& object) {
  std::string text = object.at("action").string();
  if (auto const supply = textOf(object, "supply")) {
    text += ' ' + *supply;
  }
  if (JsonValue const count = object.at("transactions"); !count.isNull()) {
    unsigned const number = count.integer(0, std::numeric_limits<unsigned>::max());
    text += ", " + std::to_string(number) + (number == 1 ? " transaction" : " transactions");
  }
  return text;
}

/// Calls `take` for each event of this name.
template <class Take>
void forEach(std::string const& file, RecordedSlot const& recorded, std::string_view name,
             Take take) {
  for (RecordedEvent const& event : recorded.events) {
    if (event.event == name) {
      try {
        take(event.time, event.object);
      } catch (UsageError const& error) {
        throw Failure(file + ":" + std::to_string(event.line) + ": " + error.what());
      }
    }
  }
}

}  // namespace

bool tellEvents(std::string const& file, RecordedSlot const& recorded, Lane& lane) {
  bool hasVerdicts = false;
  forEach(file, recorded, "supply", [&](double time, JsonValue::Json const& json) {
    lane.supplyIs(time, supplyFrom(json));
    hasVerdicts = true;
  });
  forEach(file, recorded, "act", [&](double time, JsonValue::Json const& json) {
    lane.actIs(time, actFrom(JsonValue(json, "")));
  });
  forEach(file, recorded, "stop", [&](double, JsonValue::Json const& json) {
    if (auto const reason = textOf(JsonValue(json, ""), "reason")) {
      lane.noteIs("its source ended: " + *reason);
    }
  });
  return hasVerdicts;
}

}  // namespace Agent
