// The elements of an argument list, taken one by one.
#pragma once

#include <utility>

#include "host/kex/generic/Holder.h"

namespace Tables {

/// The elements of an argument list, taken one by one. Throws the type exception
/// "Kex::GenericIf::List_" when there is no list.
class ArgumentReader {
 public:
  /// `list` outlives the reader.
  explicit ArgumentReader(Kex::GenericIf const* list);

  /// The next argument; throws a type exception naming it when it is missing or does not convert.
  template <class T>
  T next(char const* name) {
    auto value = Kex::convertTo<T>(nextElement());
    if (!value) {
      Kex::GenericIf::throwTypeException(name);
    }
    return *std::move(value);
  }
  /// Throws the unknown-argument exception naming `owner` when an element is left.
  void end(Kex::Name const& owner) const;

 private:
  Kex::GenericIf const* nextElement();

  Kex::GenericIf::List_ const& list_;
  std::size_t next_ = 0;
};

}  // namespace Tables
