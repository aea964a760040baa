// Holders of plain values, and what a value's record and text are.
#include "host/kex/generic/Holder.h"

namespace Kex {

std::optional<U64> heldNumber(GenericIf const& from) {
  if (auto const* const u8 = dynamic_cast<Holder<unsigned char> const*>(&from)) {
    return u8->value();
  }
  if (auto const* const u32 = dynamic_cast<Holder<unsigned int> const*>(&from)) {
    return u32->value();
  }
  if (auto const* const u64 = dynamic_cast<Holder<unsigned long long> const*>(&from)) {
    return u64->value();
  }
  return std::nullopt;
}

}  // namespace Kex
