// Values and references to and from text.
#include "host/kex/generic/TextConversion.h"

#include <charconv>
#include <string>
#include <string_view>

#include "host/kex/base/Format.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/entity/Place.h"
#include "host/kex/generic/Builtin.h"
#include "host/kex/type/KexType.h"

namespace Kex {

namespace {

/// It starts with a byte that names escape.
constexpr std::string_view kNullText = "(null)";

template <class Number>
Number toNumber(String8 const& text, KexType const& type) {
  std::string_view digits = text.view();
  int base = 10;
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    digits.remove_prefix(2);
    base = 16;
  }
  Number value{};
  char const* const end = digits.data() + digits.size();
  auto const [stop, error] = std::from_chars(digits.data(), end, value, base);
  if (error != std::errc() || stop != end) {
    cannotConvert(text.charPtr(), text.charPtr() + text.len(), type);
  }
  return value;
}

}  // namespace

void cannotConvert(char const* start, char const* end, KexType const& type) {
  std::string const text(start, end);
  throw Exception(format("cannot convert '%s' to %s", text.c_str(), type.fullName().charPtr()),
                  Exception::kConversion, true);
}

Ptr<PtrInterface> sequenceToValueOfPtr(char const* start, char const* end, char const*& stop) {
  stop = start;
  std::string_view const text(start, end);
  if (text.starts_with(kNullText)) {
    stop = start + kNullText.size();
    return {};
  }
  Ptr<PtrInterface> found(text.starts_with('/') ? &root() : nullptr);
  while (stop != end && *stop == '/') {
    ++stop;
    Name const name = readName(stop, end);
    bool const isRootAlone =
        name.str().empty() && stop == start + 1 && (stop == end || *stop != '/');
    if (found && !isRootAlone) {
      found = found->member(name);
    }
  }
  return found;
}

void throwJunk(char const* stop, String8 const& text) {
  throw Exception(format("junk at column %lld deserializing %s",
                         static_cast<long long>(stop - text.charPtr()), text.charPtr()),
                  Exception::kConversion, true);
}

Ptr<PtrInterface> textToPtr(String8 const& text, KexType const& type) {
  char const* const start = text.charPtr();
  char const* stop = start;
  Ptr<PtrInterface> found = sequenceToValueOfPtr(start, start + text.len(), stop);
  if (found && !found->fwkType().isA(type)) {
    cannotConvert(start, stop, type);
  }
  if (stop != start + text.len()) {
    throwJunk(stop, text);
  }
  return found;
}

bool Strep<bool>::toValue(String8 const& text) {
  if (text == "true" || text == "1") {
    return true;
  }
  if (text == "false" || text == "0") {
    return false;
  }
  cannotConvert(text.charPtr(), text.charPtr() + text.len(), Builtin<bool>::_fwkType());
}

unsigned char Strep<unsigned char>::toValue(String8 const& text) {
  return toNumber<unsigned char>(text, Builtin<unsigned char>::_fwkType());
}

unsigned int Strep<unsigned int>::toValue(String8 const& text) {
  return toNumber<unsigned int>(text, Builtin<unsigned int>::_fwkType());
}

unsigned long long Strep<unsigned long long>::toValue(String8 const& text) {
  return toNumber<unsigned long long>(text, Builtin<unsigned long long>::_fwkType());
}

double Strep<double>::toValue(String8 const& text) {
  double value{};
  char const* const end = text.charPtr() + text.len();
  auto const [stop, error] = std::from_chars(text.charPtr(), end, value);
  if (error != std::errc() || stop != end) {
    cannotConvert(text.charPtr(), end, Builtin<double>::_fwkType());
  }
  return value;
}

String8 valueToStrep(bool value) { return value ? "true" : "false"; }
String8 valueToStrep(unsigned char value) { return String8(std::to_string(value)); }
String8 valueToStrep(unsigned int value) { return String8(std::to_string(value)); }
String8 valueToStrep(unsigned long long value) { return String8(std::to_string(value)); }
String8 valueToStrep(double value) { return format("%.12g", value); }
String8 valueToStrep(String8 const& value) { return value; }
String8 valueToStrep(Name const& value) { return value.str(); }

String8 ptrToStrep(PtrInterface const* object) {
  if (object == nullptr) {
    return String8(kNullText);
  }
  String8 text = object->path();
  return text.empty() ? format("<%s>", object->fwkType().fullName().charPtr()) : text;
}

}  // namespace Kex
