// A JSON object, written as it is told.
#include "agent/base/JsonObject.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>

#include "agent/base/Text.h"

namespace Agent {

namespace {

/// What follows the backslash of a byte that is escaped in a JSON text; 0 for one that stands as it
/// is, and for one that is no ASCII.
constexpr auto kEscapes = [] {
  std::array<char, 256> escapes{};
  std::fill_n(escapes.begin(), 0x20, 'u');
  constexpr std::string_view kNamed = "\"\\\b\f\n\r\t";
  constexpr std::string_view kNames = "\"\\bfnrt";
  for (std::size_t i = 0; i < kNamed.size(); ++i) {
    escapes[static_cast<unsigned char>(kNamed[i])] = kNames[i];
  }
  return escapes;
}();

char escapeOf(char byte) { return kEscapes[static_cast<unsigned char>(byte)]; }

bool isAscii(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

bool isPlain(char byte) { return isAscii(byte) && escapeOf(byte) == 0; }

/// Whether eight bytes stand as they are, asked of all at once.
bool arePlain(char const* text) {
  static constexpr std::uint64_t kOnes = ~std::uint64_t{0} / 0xFF;
  std::uint64_t eight = 0;
  std::memcpy(&eight, text, sizeof eight);
  // Where no byte has its top bit, taking n from each sets that of those below n.
  auto const areBelow = [](std::uint64_t bytes, unsigned n) { return bytes - kOnes * n; };
  std::uint64_t const others = eight | areBelow(eight, 0x20) | areBelow(eight ^ kOnes * '"', 1) |
                               areBelow(eight ^ kOnes * '\\', 1);
  return (others & kOnes << 7) == 0;
}

/// The first byte that is not plain, or `end`.
char const* firstOther(char const* at, char const* end) {
  while (end - at >= 8 && arePlain(at)) {
    at += 8;
  }
  return std::find_if_not(at, end, isPlain);
}

void appendOther(std::string& out, char byte) {
  if (!isAscii(byte)) {
    out += latin1ToUtf8({&byte, 1});
    return;
  }
  (out += '\\') += escapeOf(byte);
  if (escapeOf(byte) == 'u') {
    constexpr std::string_view kDigits = "0123456789abcdef";
    auto const value = static_cast<unsigned char>(byte);
    ((out += "00") += kDigits[value >> 4]) += kDigits[value & 0xFU];
  }
}

}  // namespace

void JsonObject::write(Latin1 text) {
  text_ += '"';
  for (char const *at = text.bytes.begin(), *const end = text.bytes.end(); at != end;) {
    char const* const plain = firstOther(at, end);
    text_.append(at, plain);
    at = plain;
    if (at != end) {
      appendOther(text_, *at++);
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
