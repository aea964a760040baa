// Where a slot's detection began, and what it knew then.
#include "agent/recording/Beginning.h"

#include <limits>
#include <optional>
#include <string_view>

#include "agent/base/Text.h"

namespace Agent {

namespace {

using PowerSupplyDetector::BackOff;
using PowerSupplyDetector::Outcome;
using PowerSupplyDetector::Timings;

/// A hundred years.
constexpr double kLongest = 3.2e9;

/// The keys of an outcome that is remembered.
struct OutcomeKeys {
  char const* verdict;
  char const* texts;
};

constexpr OutcomeKeys kTold = {.verdict = "told", .texts = "toldTexts"};
constexpr OutcomeKeys kUnconfirmed = {.verdict = "unconfirmed", .texts = "unconfirmedTexts"};

void add(JsonObject& object, OutcomeKeys const& keys, std::optional<Outcome> const& outcome) {
  object
      .add(keys.verdict,
           outcome ? std::optional<std::string_view>(verdictName(outcome->verdict)) : std::nullopt)
      .add(keys.texts, outcome ? outcome->texts : 0);
}

std::optional<Outcome> outcomeFrom(JsonValue const& start, OutcomeKeys const& keys) {
  JsonValue const verdict = start.at(keys.verdict);
  Outcome outcome{.texts = start.at(keys.texts).integer(0, std::numeric_limits<Kex::U32>::max())};
  if (verdict.isNull()) {
    return std::nullopt;
  }
  auto const found = Hardware::PowerSupplySlot::verdictOf(verdict.string());
  if (!found) {
    verdict.refuse(inQuotes(verdict.string()) + " is no verdict");
  }
  outcome.verdict = *found;
  return outcome;
}

}  // namespace

JsonObject& addBeginning(JsonObject& object, Beginning const& beginning) {
  object.add("pollInterval", beginning.timings.pollInterval)
      .add("reviewInterval", beginning.timings.reviewInterval);
  add(object, kTold, beginning.memory.told);
  add(object, kUnconfirmed, beginning.memory.unconfirmed);
  return object.add("mismatches", beginning.memory.mismatches)
      .add("backOff", beginning.memory.backOff.interval());
}

Beginning beginningFrom(JsonValue const& start) {
  Beginning beginning;
  beginning.time = start.at("time").number(0, std::numeric_limits<double>::max());
  beginning.timings.pollInterval = start.at("pollInterval").number(Timings::kLeast, kLongest);
  beginning.timings.reviewInterval = start.at("reviewInterval").number(Timings::kLeast, kLongest);
  beginning.memory.told = outcomeFrom(start, kTold);
  beginning.memory.unconfirmed = outcomeFrom(start, kUnconfirmed);
  beginning.memory.mismatches = static_cast<Kex::U8>(start.at("mismatches").integer(0, 2));
  beginning.memory.backOff = BackOff(start.at("backOff").number(0, kLongest));
  return beginning;
}

}  // namespace Agent
