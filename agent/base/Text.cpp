// Bytes of unknown origin as text.
#include "agent/base/Text.h"

namespace Agent {

namespace {

std::string hexByte(Kex::U8 byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  return {kDigits[byte >> 4], kDigits[byte & 0x0f]};
}

template <class IsPlain>
std::string escapedUnless(std::string_view bytes, IsPlain isPlain) {
  std::string text;
  for (char const byte : bytes) {
    auto const value = static_cast<Kex::U8>(byte);
    text += isPlain(value) ? std::string(1, byte) : "\\x" + hexByte(value);
  }
  return text;
}

}  // namespace

std::string escaped(std::string_view bytes) {
  return escapedUnless(bytes, [](Kex::U8 byte) { return byte >= 0x20 && byte <= 0x7E; });
}

std::string inQuotes(std::string_view bytes) { return '"' + escaped(bytes) + '"'; }

std::string latin1ToUtf8(std::string_view bytes) {
  std::string text;
  for (char const byte : bytes) {
    auto const value = static_cast<Kex::U8>(byte);
    if (value < 0x80) {
      text += byte;
    } else {
      text += static_cast<char>(0xC0 | value >> 6);
      text += static_cast<char>(0x80 | (value & 0x3f));
    }
  }
  return text;
}

std::string hex(std::span<Kex::U8 const> bytes, std::string_view separator) {
  std::string text;
  for (Kex::U8 const byte : bytes) {
    text += (text.empty() ? std::string() : std::string(separator)) + hexByte(byte);
  }
  return text;
}

std::string oneLine(std::string_view text) {
  return escapedUnless(text, [](Kex::U8 byte) { return byte >= 0x20 && byte != 0x7F; });
}

}  // namespace Agent
