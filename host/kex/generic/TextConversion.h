// Values and references to and from text.
#pragma once

#include "host/kex/base/Exception.h"
#include "host/kex/base/Name.h"
#include "host/kex/notify/PtrInterface.h"

namespace Kex {

class KexType;

/// Converting a text failed between `start` and `end` (exception identifier 12): what stands there
/// is no `type`.
[[noreturn]] KEX_API void cannotConvert(char const* start, char const* end, KexType const& type);

/// Reads a reference from the start of [`start`, `end`): a path from the root, or "(null)". `stop`
/// is where reading stopped. Null also for a path that names nothing.
KEX_API Ptr<PtrInterface> sequenceToValueOfPtr(char const* start, char const* end,
                                               char const*& stop);

/// The exception for text that goes on after its value (identifier 12).
[[noreturn]] KEX_API void throwJunk(char const* stop, String8 const& text);

/// A reference to an object of the record's type, as `strepToValue` reads it.
KEX_API Ptr<PtrInterface> textToPtr(String8 const& text, KexType const& type);

/// A reference to a `T` read from the start of a text; something else is refused with
/// `cannotConvert`.
template <class T>
Ptr<T> sequenceToValue(char const* start, char const* end, char const*& stop) {
  Ptr<PtrInterface> const found = sequenceToValueOfPtr(start, end, stop);
  Ptr<T> value = dynamicCast<T>(found);
  if (found && !value) {
    cannotConvert(start, stop, T::_fwkType());
  }
  return value;
}

/// Reads a whole text as a `T`.
template <class T>
struct Strep;

template <class T>
struct Strep<Ptr<T>> {
  static Ptr<T> toValue(String8 const& text) {
    char const* const start = text.charPtr();
    char const* const end = start + text.len();
    char const* stop = start;
    Ptr<T> value = sequenceToValue<T>(start, end, stop);
    if (stop != end) {
      throwJunk(stop, text);
    }
    return value;
  }
};

template <>
struct KEX_API Strep<bool> {
  static bool toValue(String8 const& text);
};
template <>
struct KEX_API Strep<unsigned char> {
  static unsigned char toValue(String8 const& text);
};
template <>
struct KEX_API Strep<unsigned int> {
  static unsigned int toValue(String8 const& text);
};
template <>
struct KEX_API Strep<unsigned long long> {
  static unsigned long long toValue(String8 const& text);
};
template <>
struct KEX_API Strep<double> {
  static double toValue(String8 const& text);
};
template <>
struct KEX_API Strep<String8> {
  static String8 toValue(String8 const& text) { return text; }
};
template <>
struct KEX_API Strep<Name> {
  static Name toValue(String8 const& text) { return Name(text); }
};

/// The value that `text` stands for as a whole: numbers decimal or 0x-hexadecimal, "true" and
/// "false", texts as they are, references as paths. Throws an `Exception` (identifier 12).
template <class T>
T strepToValue(String8 const& text) {
  return Strep<T>::toValue(text);
}

/// The text that `strepToValue` reads as `value`: numbers in decimal, doubles with 12 digits.
KEX_API String8 valueToStrep(bool value);
KEX_API String8 valueToStrep(unsigned char value);
KEX_API String8 valueToStrep(unsigned int value);
KEX_API String8 valueToStrep(unsigned long long value);
KEX_API String8 valueToStrep(double value);
KEX_API String8 valueToStrep(String8 const& value);
KEX_API String8 valueToStrep(Name const& value);
/// The path of a reference; "(null)" for the null one, which no path can be; the type's name in
/// angle brackets for an object without a place.
KEX_API String8 ptrToStrep(PtrInterface const* object);

template <class T>
String8 valueToStrep(Ptr<T> const& value) {
  return ptrToStrep(value.ptr());
}

}  // namespace Kex
