// Scenario files: which supplies are in which slots, and what happens to them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "agent/transport/FaultKind.h"
#include "agent/transport/SimulatedSupply.h"

namespace Agent {

/// A recording that stands for a supply: the text after `replay:` of a SOURCE.
struct RecordedSupply {
  std::string target;
};

/// What is in a slot.
struct ScenarioSupply {
  /// As it is called in the file.
  std::string text;
  std::variant<SimulatedSupply, RecordedSupply> kind;
};

/// From `at` (seconds) on, `supply` is in the slot; none: the slot is empty.
struct ScenarioChange {
  double at;
  std::optional<ScenarioSupply> supply;
};

/// A slot and its story.
struct ScenarioSlot {
  std::string name;
  std::optional<ScenarioSupply> supply;
  /// In the order of their times.
  std::vector<ScenarioChange> changes;
  std::vector<Fault> faults;
};

/// A scenario.
struct Scenario {
  /// Seconds of virtual time.
  double duration;
  std::vector<ScenarioSlot> slots;
  /// All that was read for it, or will be.
  std::vector<std::string> files{};
};

/// Reads a scenario from `text`; paths in it are relative to `folder`. Throws a `UsageError` that
/// begins with the path of the value that does not fit (`slots[0].events[2].at: ...`), and a
/// `Failure` that begins so when what is named there cannot be opened.
Scenario parseScenario(std::string_view text, std::filesystem::path const& folder);
/// Reads a scenario file. Throws as `parseScenario`, with the file's name in front, and a `Failure`
/// when the file cannot be read.
Scenario readScenario(std::string const& file);

}  // namespace Agent
