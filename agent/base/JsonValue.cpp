// A value in a JSON document, with the path that names it in messages.
#include "agent/base/JsonValue.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "agent/base/Text.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

/// `value` as it stands in the document, cut where it is long.
std::string shown(JsonValue::Json const& value) {
  constexpr std::size_t kMost = 60;
  std::string text = value.dump(-1, ' ', true, JsonValue::Json::error_handler_t::replace);
  return text.size() <= kMost ? text : text.substr(0, kMost) + "...";
}

/// "from 0.001 to 10", "of at least 0".
std::string range(double least, double most) {
  return Kex::format(most == std::numeric_limits<double>::max() ? "of at least %.15g"
                                                                : "from %.15g to %.15g",
                     least, most)
      .charPtr();
}

}  // namespace

void JsonValue::refuse(std::string const& why) const { throw UsageError(name() + ": " + why); }

void JsonValue::checkObject() const {
  if (!value_->is_object()) {
    refuse(shown(*value_) + " is no object");
  }
}

void JsonValue::checkKeys(std::span<std::string_view const> allowed) const {
  checkObject();
  for (auto const& [key, value] : value_->items()) {
    if (std::ranges::find(allowed, key) == allowed.end()) {
      refuse("unknown key " + inQuotes(key));
    }
  }
}

JsonValue JsonValue::at(char const* key) const {
  if (!has(key)) {
    refuse("the key \"" + std::string(key) + "\" is missing");
  }
  return {(*value_)[key], path_.empty() ? key : path_ + "." + key};
}

std::vector<JsonValue> JsonValue::elements() const {
  if (!value_->is_array()) {
    refuse(shown(*value_) + " is no array");
  }
  std::vector<JsonValue> elements;
  for (Json const& element : *value_) {
    elements.emplace_back(element, path_ + "[" + std::to_string(elements.size()) + "]");
  }
  return elements;
}

std::vector<std::pair<std::string, JsonValue>> JsonValue::members() const {
  checkObject();
  std::vector<std::pair<std::string, JsonValue>> members;
  for (auto const& [key, member] : value_->items()) {
    members.emplace_back(key, JsonValue(member, path_ + "." + oneLine(key)));
  }
  return members;
}

std::string JsonValue::string() const {
  if (!value_->is_string()) {
    refuse(shown(*value_) + " is no string");
  }
  return value_->get<std::string>();
}

std::string JsonValue::bytes() const {
  std::string const text = string();
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto const first = static_cast<unsigned char>(text[i]);
    if (first < 0x80) {
      bytes += text[i];
    } else if (first <= 0xC3 && i + 1 < text.size()) {
      // Two bytes of UTF-8: the code points 0x80 to 0xFF.
      bytes +=
          static_cast<char>((first & 0x03U) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3FU));
    } else {
      refuse(shown(*value_) + " has a character above U+00FF");
    }
  }
  return bytes;
}

double JsonValue::number(double least, double most) const {
  double const number = value_->is_number() ? value_->get<double>() : std::nan("");
  bool const isWithin = number >= least && number <= most;  // false for what is no number
  if (!isWithin) {
    refuse(shown(*value_) + " is no number " + range(least, most));
  }
  return number;
}

unsigned JsonValue::integer(unsigned least, unsigned most) const {
  double const value = value_->is_number() ? value_->get<double>() : std::nan("");
  bool const isWithin = value >= least && value <= most;
  if (!isWithin || value != std::floor(value)) {
    refuse(shown(*value_) + " is no whole number from " + std::to_string(least) + " to " +
           std::to_string(most));
  }
  return static_cast<unsigned>(value);
}

}  // namespace Agent
