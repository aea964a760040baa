// printf-style formatting into a String8.
#include "host/kex/base/Format.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

namespace Kex {

String8 format(char const* pattern, ...) {
  // Roomy enough for a filled template, so that the text is usually formatted once.
  std::array<char, 4096> local;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  std::va_list arguments;
  va_start(arguments, pattern);
  std::va_list again;
  va_copy(again, arguments);
  int const length = std::vsnprintf(local.data(), local.size(), pattern, arguments);
  va_end(arguments);
  String8 text;
  if (length >= 0 && static_cast<std::size_t>(length) < local.size()) {
    text = String8(std::string_view(local.data(), static_cast<std::size_t>(length)));
  } else if (length >= 0) {
    std::string bytes(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(bytes.data(), bytes.size() + 1, pattern, again);
    text = String8(bytes);
  }
  va_end(again);
  return text;
}

}  // namespace Kex
