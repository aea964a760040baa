// How close a supply that a descriptor does not know came to its keys.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/models/Question.h"

namespace Agent {

/// What a descriptor would have known in the supply's stead.
struct NearMiss {
  Descriptors::KeyField field;
  std::string text;
  /// What of the supply is another: "other blanks", "another case", ...
  char const* difference;
};

/// What is nearly one supply: its part number and product name with other blanks, in another case,
/// with one character more, less or another, and each in the other's place.
class NearMisses {
 public:
  explicit NearMisses(Ipmi::ProductInfoArea const& fields);

  /// The nearest that `descriptor` would know; none where the supply is far from all its keys.
  std::optional<NearMiss> of(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor) const;

 private:
  struct Candidate {
    NearMiss miss;
    Question question;
  };
  void add(Descriptors::KeyField field, std::string const& text, char const* difference);

  /// The nearest first.
  std::vector<Candidate> candidates_;
};

}  // namespace Agent
