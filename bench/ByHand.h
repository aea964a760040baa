// The same work without the framework, as straight as it can be written.
#pragma once

#include <array>
#include <string>

#include "agent/transport/SimulatedSupply.h"
#include "ipmi/model/DescriptorTypes.h"

namespace ByHand {

/// The texts of a product info area.
struct Fields {
  std::string manufacturerName;
  std::string productName;
  std::string partNumber;
  std::string productVersion;
  std::string serialNumber;
};

/// What a descriptor has to say.
struct Output {
  bool managed = false;
  std::string fdl;
};
using Outputs = std::array<Output, Emerson::IpmiIdentifier::kModelCount>;

/// What a recognition yields.
struct Description {
  std::string mfrId;
  Fields fields;
  std::string fdl;
};

/// Asks all models one after the other: trims the key where the model wants it so, compares it,
/// sets both outputs. Answers whether one knows the supply.
bool walk(Fields const& fields, Outputs& outputs);

/// Reads a DS2900 from its MFR_ID to the first check, with the transactions that the identifier
/// needs. Answers whether it is one.
bool recognise(Agent::SimulatedSupply const& supply, Description& description);

}  // namespace ByHand
