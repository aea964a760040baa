// What one supported model is: its keys and the values that fill its family's FDL template.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "host/descriptors/Recognition.h"
#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/DescriptorTypes.h"

namespace Emerson::IpmiIdentifier {

using Descriptors::KeyField;
using Descriptors::KeyTrace;
using Descriptors::MatchRule;

enum class Airflow : std::uint8_t { frontToBack, backToFront };

/// The one or two keys that a model accepts, in the order they are tried; an empty one is none.
struct AcceptedKeys : std::array<std::string_view, 2> {
  /// An empty key is none.
  constexpr AcceptedKeys(std::string_view first = "", std::string_view second = "")
      : array{first, second} {}
};

struct Model;

/// What all models of one family share.
struct Family {
  KeyField keyField;
  MatchRule rule;
  /// The lengths in bytes that accepted keys have; 0: any.
  std::array<std::size_t, 2> keyLengths{};
  /// Fills the family's template. May be called only once the library is loaded.
  Kex::String8 (*fill)(Model const&, Ipmi::ProductInfoArea const&);
  /// Whether a row has each column that the family's template asks for, and no other one.
  bool (*isComplete)(Model const&);
};

/// One row: a model in one airflow direction. A column that a family's template does not ask for
/// keeps its neutral default.
struct Model {
  ModelId id{};
  Airflow airflow = Airflow::frontToBack;
  KeyTrace keyTrace = KeyTrace::none;
  Family const* family = nullptr;  ///< never null in the table
  AcceptedKeys keys;
  std::string_view message{};  ///< traced at level 0; empty: no trace

  char const* api = "";
  char const* modelName = "";
  char const* offOnPowerLoss = "";    ///< "True" or "False"
  char const* extraSensorBlock = "";  ///< whole FDL lines that stand before the fan's
  int fanSpeed = 0;                   ///< maximum, revolutions a minute
  int sensor1Overheat = 0;            ///< degrees Celsius
  int sensor1Critical = 0;            ///< degrees Celsius
  int sensor2Overheat = 0;            ///< degrees Celsius
  int sensor2Critical = 0;            ///< degrees Celsius
  int sensor2Target = 0;              ///< degrees Celsius

  /// All columns that templates may ask for.
  static constexpr auto texts();
  /// See `texts`.
  static constexpr auto numbers();

  /// The airflow as the FDL names it.
  constexpr char const* airflowText() const noexcept {
    return airflow == Airflow::frontToBack ? "frontToBackAirflow" : "backToFrontAirflow";
  }

  /// The suffix of the fan type, in families whose fan type has one.
  constexpr char const* fanSuffix() const noexcept {
    return airflow == Airflow::frontToBack ? "F" : "R";
  }
};

constexpr auto Model::texts() {
  return std::to_array<char const * Model::*>(
      {&Model::api, &Model::modelName, &Model::offOnPowerLoss, &Model::extraSensorBlock});
}

constexpr auto Model::numbers() {
  return std::to_array<int Model::*>({&Model::fanSpeed, &Model::sensor1Overheat,
                                      &Model::sensor1Critical, &Model::sensor2Overheat,
                                      &Model::sensor2Critical, &Model::sensor2Target});
}

}  // namespace Emerson::IpmiIdentifier
