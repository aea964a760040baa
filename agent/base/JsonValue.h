// A value in a JSON document, with the path that names it in messages.
#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/base/Error.h"

namespace Agent {

/// Reads a value by what is expected of it. Whatever does not fit throws a `UsageError` that begins
/// with the value's path: `slots[0].events[2].at: ...`.
class JsonValue {
 public:
  using Json = nlohmann::ordered_json;

  /// `value` must outlive this one; `path` is what it is called, empty for the whole document.
  JsonValue(Json const& value, std::string path) : value_(&value), path_(std::move(path)) {}

  /// What the value is called.
  std::string const& path() const { return path_; }
  bool isNull() const { return value_->is_null(); }
  bool isArray() const { return value_->is_array(); }
  bool isNumber() const { return value_->is_number(); }
  /// Throws unless the value is an object whose keys are among `allowed`.
  void checkKeys(std::initializer_list<std::string_view> allowed) const {
    checkKeys(std::span(allowed));
  }
  void checkKeys(std::span<std::string_view const> allowed) const;
  bool has(char const* key) const { return value_->contains(key); }
  /// The member under `key`, which must be there.
  JsonValue at(char const* key) const;
  /// The elements; the value must be an array.
  std::vector<JsonValue> elements() const;
  /// The members by their keys, in the document's order; the value must be an object.
  std::vector<std::pair<std::string, JsonValue>> members() const;
  std::string string() const;
  /// A text whose code points stand for bytes (Latin-1).
  std::string bytes() const;
  /// A finite number of at least `least` and at most `most`.
  double number(double least, double most) const;
  /// A whole number within the same bounds.
  unsigned integer(unsigned least, unsigned most) const;
  [[noreturn]] void refuse(std::string const& why) const;
  /// What the value is called: its path in the document.
  std::string name() const { return path_.empty() ? "the document" : path_; }

 private:
  void checkObject() const;

  Json const* value_;
  std::string path_;
};

}  // namespace Agent
