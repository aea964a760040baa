// What FRU records have in common: bytes, zero sum, and what makes one unacceptable.
#pragma once

#include <algorithm>
#include <array>
#include <span>

#include "host/kex/base/String8.h"

namespace Ipmi {

/// What makes a record unacceptable.
struct RecordFault {
  /// The byte at fault, from the start of the record.
  Kex::U32 offset;
  /// What is wrong with it, for a person.
  Kex::String8 text;
};

/// The first `length` of `bytes`; those that are not there read as 0.
template <std::size_t length>
std::array<Kex::U8, length> firstBytes(std::span<Kex::U8 const> bytes) {
  std::array<Kex::U8, length> first{};
  std::ranges::copy(bytes.first(std::min(length, bytes.size())), first.begin());
  return first;
}
/// The byte that makes `bytes` and itself add up to 0 modulo 256.
KEX_API Kex::U8 checksumOf(std::span<Kex::U8 const> bytes);
/// Whether `bytes` add up to 0 modulo 256; false when there are none.
KEX_API bool isZeroSum(std::span<Kex::U8 const> bytes);

}  // namespace Ipmi
