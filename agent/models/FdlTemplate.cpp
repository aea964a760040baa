// The FDL of a family as it stands in a file: text, and the fields of the supply that go into it.
#include "agent/models/FdlTemplate.h"

namespace Agent {

void FdlTemplate::textAdd(std::string_view text) {
  for (char const byte : text) {
    if (byte == '%') {
      fieldAdd(nullptr);
    } else {
      pattern_ += byte;
    }
  }
}

void FdlTemplate::fieldAdd(Descriptors::Field field) {
  pattern_ += "%s";
  fields_.push_back(field);
}

Kex::String8 FdlTemplate::filled(Ipmi::ProductInfoArea const& fields) const {
  std::vector<std::string_view> arguments;
  arguments.reserve(fields_.size());
  for (Descriptors::Field const field : fields_) {
    arguments.emplace_back(field == nullptr ? "%" : (fields.*field)().charPtr());
  }
  return Descriptors::filled(pattern_, arguments);
}

}  // namespace Agent
