// Addresses in the tree: names as they stand in paths, whose member an object is.
#include "host/kex/entity/Place.h"

#include <string_view>

namespace Kex {

namespace {

constexpr std::string_view kEndOfName = "/ \t[]{}()<>,\\";

}  // namespace

std::string escapedName(Name const& name) {
  std::string text;
  for (char const byte : name.str().view()) {
    if (kEndOfName.find(byte) != std::string_view::npos) {
      text += '\\';
    }
    text += byte;
  }
  return text;
}

Name readName(char const*& at, char const* end) {
  std::string name;
  while (at != end) {
    bool const isEscaped = *at == '\\' && at + 1 != end;
    if (!isEscaped && kEndOfName.find(*at) != std::string_view::npos) {
      break;
    }
    at += isEscaped ? 1 : 0;
    name += *at++;
  }
  return Name(String8(name));
}

String8 Place::path() const {
  std::string text(owner_ == nullptr ? "" : owner_->path().view());
  if (text.empty()) {
    return {};
  }
  if (text != "/") {
    text += '/';
  }
  return String8(text + escapedName(name_));
}

}  // namespace Kex
