// A JSON object, written as it is told.
#include "agent/base/JsonObject.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "agent/base/Text.h"

namespace Agent {

namespace {

/// How each byte stands in a JSON text.
constexpr auto kIsPlain = [] {
  std::array<bool, 256> isPlain{};
  for (unsigned byte = 0x20; byte < 0x80; ++byte) {
    isPlain[byte] = byte != '"' && byte != '\\';
  }
  return isPlain;
}();

bool isPlain(char byte) { return kIsPlain[static_cast<unsigned char>(byte)]; }

bool isAscii(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

void appendEscaped(std::string& out, char byte) {
  constexpr std::string_view kNamed = "\"\\\b\f\n\r\t";
  constexpr std::string_view kNames = "\"\\bfnrt";
  if (std::size_t const named = kNamed.find(byte); named != std::string_view::npos) {
    (out += '\\') += kNames[named];
  } else if (isAscii(byte)) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    auto const value = static_cast<unsigned char>(byte);
    ((out += "\\u00") += kDigits[value >> 4]) += kDigits[value & 0xFU];
  } else {
    out += latin1ToUtf8({&byte, 1});
  }
}

}  // namespace

void JsonObject::write(Latin1 text) {
  text_ += '"';
  for (char const *at = text.bytes.begin(), *const end = text.bytes.end(); at != end;) {
    char const* const plain = std::find_if_not(at, end, isPlain);
    text_.append(at, plain);
    at = plain;
    if (at != end) {
      appendEscaped(text_, *at++);
    }
  }
  text_ += '"';
}

void JsonObject::write(std::string_view text) {
  using Json = nlohmann::json;
  if (std::ranges::all_of(text, isAscii)) {
    write(Latin1{text});
  } else {
    text_ += Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
  }
}

void JsonObject::write(std::vector<std::string_view> const& texts) {
  text_ += '[';
  for (std::string_view const text : texts) {
    text_ += text_.back() == '[' ? "" : ",";
    write(text);
  }
  text_ += ']';
}

void JsonObject::write(double value) { text_ += nlohmann::json(value).dump(); }

}  // namespace Agent
