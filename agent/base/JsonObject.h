// A JSON object, written as it is told.
#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Agent {

/// Bytes of unknown origin, in JSON the code points of their values.
struct Latin1 {
  std::string_view bytes;
};

/// The bytes; none for no bytes.
inline std::optional<Latin1> orNull(std::string_view bytes) {
  return bytes.empty() ? std::nullopt : std::optional(Latin1{bytes});
}

/// A JSON object of one line, of which nothing but the text is kept.
class JsonObject {
 public:
  /// Appends a member; `key` needs no escaping, and is not there yet. A text is UTF-8, in which
  /// bytes that are none (file names) are replaced; an empty `optional` is null.
  template <class Value>
  JsonObject& add(std::string_view key, Value const& value) {
    text_ += text_.empty() ? "{\"" : ",\"";
    text_ += key;
    text_ += "\":";
    write(value);
    return *this;
  }

  /// The whole object, which has a member.
  std::string text() const { return text_ + '}'; }

 private:
  void write(Latin1 text);
  void write(std::string_view text);
  void write(std::string const& text) { write(std::string_view(text)); }
  void write(char const* text) { write(std::string_view(text)); }
  void write(std::vector<std::string_view> const& texts);
  void write(bool value) { text_ += value ? "true" : "false"; }
  void write(double value);
  void write(std::integral auto value) { text_ += std::to_string(value); }
  template <class Value>
  void write(std::optional<Value> const& value) {
    if (value) {
      write(*value);
    } else {
      text_ += "null";
    }
  }

  std::string text_;
};

}  // namespace Agent
