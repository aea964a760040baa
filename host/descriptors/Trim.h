// Strips blanks and tabs at both ends of a text.
#pragma once

#include <string_view>

namespace Descriptors {

/// The part of `text` from its first to its last byte that is neither a blank (0x20) nor a
/// horizontal tab (0x09); empty when there is none. Other bytes, line feeds among them, stay.
/// The view is into the bytes of `text`.
constexpr std::string_view trimmed(std::string_view text) noexcept {
  constexpr auto isStripped = [](char byte) { return byte == ' ' || byte == '\t'; };
  while (!text.empty() && isStripped(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && isStripped(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

}  // namespace Descriptors
