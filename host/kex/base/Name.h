// Kex::Name, what entities and attributes are called.
#pragma once

#include <compare>
#include <ostream>
#include <utility>

#include "host/kex/base/String8.h"

namespace Kex {

/// Name of an entity, a type or an attribute.
class Name {
 public:
  Name() = default;
  Name(char const* text) : text_(text) {}
  explicit Name(String8 text) : text_(std::move(text)) {}

  String8 const& str() const noexcept { return text_; }
  char const* charPtr() const noexcept { return text_.charPtr(); }

  bool operator==(Name const& other) const = default;
  bool operator==(char const* other) const { return text_ == other; }
  auto operator<=>(Name const& other) const = default;

 private:
  String8 text_;
};

inline std::ostream& operator<<(std::ostream& out, Name const& name) { return out << name.str(); }

}  // namespace Kex
