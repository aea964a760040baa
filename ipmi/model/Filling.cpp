// Fills templates.
#include "ipmi/model/Filling.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <memory_resource>
#include <string>
#include <utility>

namespace Emerson::IpmiIdentifier {

Argument::Argument(int number) {
  char* const end = std::to_chars(digits_.begin(), digits_.end(), number).ptr;
  text_ = std::string_view(digits_.data(), static_cast<std::size_t>(end - digits_.data()));
}

Kex::String8 filled(std::string_view pattern, std::span<Argument const> arguments) {
  std::size_t length = pattern.size();
  for (Argument const& argument : arguments) {
    length += argument.text().size();
  }
  // Room for every template; the string that is answered makes its own.
  std::array<std::byte, 4096> room;
  std::pmr::monotonic_buffer_resource stack(room.data(), room.size());
  std::pmr::string text(&stack);
  text.reserve(length);
  for (Argument const& argument : arguments) {
    std::size_t const placeholder = pattern.find('%');
    text += pattern.substr(0, placeholder);
    text += argument.text();
    pattern.remove_prefix(placeholder + 2);
  }
  text += pattern;
  return Kex::String8(text);
}

}  // namespace Emerson::IpmiIdentifier
