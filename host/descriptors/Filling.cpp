// Fills the placeholders of a template.
#include "host/descriptors/Filling.h"

#include <array>
#include <cstddef>
#include <memory_resource>
#include <string>

namespace Descriptors {

Kex::String8 filled(std::string_view pattern, std::span<std::string_view const> arguments) {
  std::size_t length = pattern.size();
  for (std::string_view const argument : arguments) {
    length += argument.size();
  }
  // Room for every template; the string that is answered makes its own.
  std::array<std::byte, 4096> room;
  std::pmr::monotonic_buffer_resource stack(room.data(), room.size());
  std::pmr::string text(&stack);
  text.reserve(length);
  for (std::string_view const argument : arguments) {
    std::size_t const placeholder = pattern.find('%');
    text += pattern.substr(0, placeholder);
    text += argument;
    pattern.remove_prefix(placeholder + 2);
  }
  text += pattern;
  return Kex::String8(text);
}

}  // namespace Descriptors
