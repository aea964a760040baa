// The FDL of a family as it stands in a file: text, and the fields of the supply that go into it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/descriptors/Filling.h"

namespace Agent {

/// A text with places for fields of the product info area.
class FdlTemplate {
 public:
  /// Appends text that is the same for every supply.
  void textAdd(std::string_view text);
  /// Appends the place of `field`, which goes in as stored up to its first NUL.
  void fieldAdd(Descriptors::Field field);
  /// The text with the fields of one supply in their places.
  Kex::String8 filled(Ipmi::ProductInfoArea const& fields) const;

 private:
  std::string pattern_;
  /// One a placeholder of the pattern; null where it stands for a percent sign.
  std::vector<Descriptors::Field> fields_;
};

}  // namespace Agent
