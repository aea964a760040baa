// Asking a descriptor whether it would know a supply.
#pragma once

#include <string_view>

#include "host/descriptors/Recognition.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"

namespace Agent {

using DescriptorPtr = Kex::Ptr<Ipmi::SupportedPowerSupplyDescriptorBase>;

/// A supply of which only one field of the product info area says something.
class Question {
 public:
  /// `text` has at most 63 bytes: what a field holds.
  Question(Descriptors::KeyField field, std::string_view text);

  /// Whether `descriptor`, by its own procedure, would manage the supply; one that throws would
  /// not. Its outputs are left as they are for a supply that it does not know.
  bool isKnownTo(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor) const;

 private:
  Kex::Ptr<Ipmi::IdpromContents> contents_;
};

/// While it lives, nobody is told of traces: descriptors that are asked trace what they are asked.
class QuietTraces {
 public:
  QuietTraces();
  QuietTraces(QuietTraces const&) = delete;
  QuietTraces& operator=(QuietTraces const&) = delete;
  ~QuietTraces();
};

}  // namespace Agent
