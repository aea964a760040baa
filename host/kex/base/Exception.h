// The framework's exceptions: programming errors and refused requests, never outcomes of a bus.
#pragma once

#include <exception>
#include <utility>

#include "host/kex/base/Export.h"
#include "host/kex/base/String8.h"
#include "host/kex/base/Types.h"

namespace Kex {

/// Base of all framework exceptions. `what()` is the text alone; `kind()` says what was wrong.
class KEX_API Exception : public std::exception {
 public:
  /// Identifiers of the exceptions that the framework throws.
  enum Id : U32 {
    kRange = 1,
    kType = 2,
    kConst = 3,
    kOpNotSupported = 4,
    kUnknownArg = 5,
    kBadIndexAttr = 6,
    kConversion = 12,
  };

  /// `isUserError` tells that the caller's input, not the program, is at fault.
  Exception(String8 text, U32 id, bool isUserError);
  ~Exception() override;

  /// The text alone; valid as long as the exception.
  char const* what() const noexcept override { return text_.charPtr(); }
  /// One of `Id`.
  U32 id() const { return id_; }
  bool isUserError() const { return isUserError_; }
  /// A few words for a person: "range", "type", "operation not supported", ...
  char const* kind() const;

 private:
  String8 text_;
  U32 id_;
  bool isUserError_;
};

/// A value outside its range, or a null reference that was dereferenced ("null ValidPtr").
class KEX_API RangeException : public Exception {
 public:
  explicit RangeException(String8 text) : Exception(std::move(text), kRange, true) {}
  ~RangeException() override;
};

[[noreturn]] KEX_API void throwRangeException(String8 const& text);

}  // namespace Kex
