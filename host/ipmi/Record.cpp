// What FRU records have in common: bytes, zero sum, and what makes one unacceptable.
#include "host/ipmi/Record.h"

#include <numeric>

namespace Ipmi {

Kex::U8 checksumOf(std::span<Kex::U8 const> bytes) {
  return static_cast<Kex::U8>(-std::accumulate(bytes.begin(), bytes.end(), 0));
}

bool isZeroSum(std::span<Kex::U8 const> bytes) { return !bytes.empty() && checksumOf(bytes) == 0; }

}  // namespace Ipmi
