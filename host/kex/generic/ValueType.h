// Records of value types: what can be made from a text.
#pragma once

#include "host/kex/generic/Holder.h"
#include "host/kex/type/KexType.h"

namespace Kex {

/// Record of the value type `T`, whose values are read by `strepToValue<T>`.
template <class T>
class ValueType final : public KexType {
 public:
  using KexType::KexType;

  Ptr<GenericIf> valueFromText(String8 const& text) const override {
    return make<Holder<T>>(strepToValue<T>(text), *this);
  }
};

/// Enters a value type in the type tree.
template <class T>
KexType& newValueType(std::string_view fullName) {
  std::size_t const colon = fullName.rfind(':');
  String8 const shortName(colon == std::string_view::npos ? fullName : fullName.substr(colon + 1));
  auto const record = make<ValueType<T>>(Name(shortName), nullptr, nullptr, TypeFlags{});
  record->sizeIs(sizeof(T));
  return enterHostType(record, fullName);
}

}  // namespace Kex
