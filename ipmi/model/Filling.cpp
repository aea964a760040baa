// What fills a template's placeholders.
#include "ipmi/model/Filling.h"

#include <charconv>

namespace Emerson::IpmiIdentifier {

Argument::Argument(int number) {
  char* const end = std::to_chars(digits_.begin(), digits_.end(), number).ptr;
  text_ = std::string_view(digits_.data(), static_cast<std::size_t>(end - digits_.data()));
}

}  // namespace Emerson::IpmiIdentifier
