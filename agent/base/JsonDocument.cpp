// A JSON document as it comes in: bounded, and no key twice.
#include "agent/base/JsonDocument.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "agent/base/Text.h"

namespace Agent {

namespace {

using Json = JsonValue::Json;

/// Where byte `position` of `text` is, counted from 0: the line only where there are several.
std::string placeOf(std::string_view text, std::size_t position) {
  std::string_view const before = text.substr(0, position);
  std::string const column = "column " + std::to_string(before.size() - before.rfind('\n'));
  return text.find('\n') == std::string_view::npos
             ? column
             : "line " + std::to_string(1 + std::ranges::count(before, '\n')) + ", " + column;
}

/// Builds a document from what the library's parser tells.
class Builder final : public nlohmann::json_sax<Json> {
 public:
  explicit Builder(std::string_view text) : text_(text) {}

  Json& document() { return document_; }

  bool null() override { return isAdded(nullptr); }
  bool boolean(bool value) override { return isAdded(value); }
  bool number_integer(number_integer_t value) override { return isAdded(value); }
  bool number_unsigned(number_unsigned_t value) override { return isAdded(value); }
  bool number_float(number_float_t value, string_t const& /*text*/) override {
    return isAdded(value);
  }
  bool string(string_t& value) override { return isAdded(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }  // in no text
  bool start_object(std::size_t /*size*/) override { return isOpened(Json::object()); }
  bool start_array(std::size_t /*size*/) override { return isOpened(Json::array()); }
  bool end_object() override { return isClosed(); }
  bool end_array() override { return isClosed(); }
  bool key(string_t& key) override {
    Level& level = open_.back();
    level.key = std::move(key);
    if (level.value->contains(level.key)) {
      refuse("the key is there twice");
    }
    if (level.value->size() == kMostKeys) {
      refuse("the object has more than " + std::to_string(kMostKeys) + " keys");
    }
    return true;
  }
  bool parse_error(std::size_t position, std::string const& /*token*/,
                   nlohmann::detail::exception const& error) override {
    if (dynamic_cast<Json::out_of_range const*>(&error) != nullptr) {
      refuse("no number that can be held");
    }
    // The position counts from 1.
    throw UsageError("no JSON from " + placeOf(text_, std::max<std::size_t>(position, 1) - 1) +
                     " on");
  }

 private:
  struct Level {
    Json* value;
    std::string key{};
  };

  /// Puts `value` where the parser is. Nothing that is open moves: only the innermost grows.
  Json& add(Json value) {
    if (open_.empty()) {
      return document_ = std::move(value);
    }
    auto const& [parent, key] = open_.back();
    if (parent->is_array()) {
      parent->push_back(std::move(value));
      return parent->back();
    }
    return (*parent)[key] = std::move(value);
  }

  bool isAdded(Json value) {
    add(std::move(value));
    return true;
  }

  bool isOpened(Json value) {
    if (open_.size() == kDeepestNesting) {
      refuse("nested deeper than " + std::to_string(kDeepestNesting) + " levels");
    }
    open_.push_back({.value = &add(std::move(value))});
    return true;
  }

  bool isClosed() {
    open_.pop_back();
    return true;
  }

  [[noreturn]] void refuse(std::string const& why) const {
    std::string path;
    for (auto const& [value, key] : open_) {
      // What is open in it is its last element; in the innermost one it is still to come.
      std::size_t const index = value->size() - (value == open_.back().value ? 0 : 1);
      path += value->is_array() ? "[" + std::to_string(index) + "]"
              : path.empty()    ? oneLine(key)
                                : "." + oneLine(key);
    }
    throw UsageError((path.empty() ? "the document" : path) + ": " + why);
  }

  std::string_view text_;
  Json document_;
  /// What is not closed yet, the outermost first.
  std::vector<Level> open_;
};

}  // namespace

Json parseJson(std::string_view text) {
  Builder builder(text);
  Json::sax_parse(text, &builder);
  return std::move(builder.document());
}

}  // namespace Agent
