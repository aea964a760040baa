// Faults of a bus, and what each kind of them does.
#include "agent/transport/FaultKind.h"

#include <algorithm>
#include <array>

namespace Agent {

namespace {

using Smbus::ErrorKind;
using Bytes = std::span<Kex::U8>;

void setCount(Fault const& fault, Bytes answer) {
  if (!answer.empty()) {
    answer[0] = fault.value;
    std::ranges::fill(answer.subspan(std::min<std::size_t>(answer.size(), fault.value + 1U)), 0);
  }
}

void flipByte(Fault const& fault, Bytes answer) {
  if (fault.byte < answer.size()) {
    answer[fault.byte] ^= fault.value;
  }
}

constexpr auto kKinds = std::to_array<FaultKind>({
    {.kind = Fault::Kind::nack,
     .name = "nack",
     .error = ErrorKind::noAcknowledge,
     .isAsked = false},
    {.kind = Fault::Kind::hang, .name = "hang", .error = ErrorKind::timeout, .isAsked = false},
    {.kind = Fault::Kind::count, .name = "count", .valueKey = "count", .change = &setCount},
    {.kind = Fault::Kind::flip,
     .name = "flip",
     .byteKey = "byte",
     .valueKey = "mask",
     .leastValue = 1,
     .change = &flipByte},
    {.kind = Fault::Kind::late, .error = ErrorKind::timeout},
});

constexpr bool inOrder() {
  for (std::size_t i = 0; i < kKinds.size(); ++i) {
    if (kKinds[i].kind != static_cast<Fault::Kind>(i)) {
      return false;
    }
  }
  return kKinds.size() == static_cast<std::size_t>(Fault::Kind::kEnd);
}

static_assert(inOrder(), "one row a kind, in their order");

}  // namespace

std::span<FaultKind const> faultKinds() { return kKinds; }

}  // namespace Agent
