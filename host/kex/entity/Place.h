// Addresses in the tree: names as they stand in paths, whose member an object is.
#pragma once

#include <string>

#include "host/kex/notify/PtrInterface.h"

namespace Kex {

/// A name as it stands in a path: `/`, blanks, brackets, commas and backslashes escaped.
KEX_API std::string escapedName(Name const& name);

/// Reads one escaped name; `at` goes to the first byte that is not part of it, `end` at most.
KEX_API Name readName(char const*& at, char const* end);

/// Whose member an object is, and under which name.
class KEX_API Place {
 public:
  /// Nowhere.
  Place() = default;
  /// `owner` may be null: nowhere. It is not owned, and outlives the place.
  Place(PtrInterface const* owner, Name name) : owner_(owner), name_(std::move(name)) {}

  /// Null for nowhere. Not owned.
  PtrInterface const* owner() const { return owner_; }
  Name const& name() const { return name_; }
  /// The owner's path and the name; empty where the owner has none.
  String8 path() const;

 private:
  PtrInterface const* owner_ = nullptr;
  Name name_;
};

}  // namespace Kex
