// A model that a file adds.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "agent/models/FdlTemplate.h"
#include "host/descriptors/Recognition.h"

namespace Agent {

/// One model, as the file that adds it says. It never changes once it is read.
struct Model {
  std::string file;
  /// What its value is called in the file: `models[2]`.
  std::string path;
  std::string name;
  Descriptors::KeyField keyField{};
  Descriptors::MatchRule rule{};
  Descriptors::KeyTrace keyTrace{};
  /// As bytes.
  std::vector<std::string> keys;
  /// `keys` again.
  std::vector<std::string_view> keyViews;
  std::string message;
  FdlTemplate fdl;

  /// What tells the model's supplies; it refers to the model.
  Descriptors::Recognition recognition() const {
    return {.keyField = keyField,
            .rule = rule,
            .keys = keyViews,
            .keyTrace = keyTrace,
            .message = message};
  }
};

using ModelPtr = std::shared_ptr<Model const>;
using Models = std::vector<ModelPtr>;

}  // namespace Agent
