// A number that stands for a state.
#pragma once

#include <cmath>
#include <cstdint>
#include <span>

#include "host/kex/base/String8.h"
#include "host/kex/base/Types.h"

namespace explore {

/// FNV-1a over what is added, one after the other.
class Digest {
 public:
  Digest& add(std::uint64_t value) {
    for (unsigned i = 0; i < sizeof value; ++i) {
      byte(static_cast<Kex::U8>(value >> (8 * i)));
    }
    return *this;
  }
  Digest& add(std::span<Kex::U8 const> bytes) {
    add(bytes.size());
    for (Kex::U8 const one : bytes) {
      byte(one);
    }
    return *this;
  }
  Digest& addText(Kex::String8 const& text) {
    return add(std::span(reinterpret_cast<Kex::U8 const*>(text.charPtr()), text.len()));
  }
  /// Seconds, to a tenth of a millisecond: nothing in a slot is decided by less.
  Digest& addTime(double seconds) {
    constexpr double kTicks = 1e4;
    return add(std::isfinite(seconds) ? static_cast<std::uint64_t>(static_cast<std::int64_t>(
                                            std::llround(seconds * kTicks)))
                                      : ~std::uint64_t{0});
  }
  std::uint64_t value() const { return value_; }

 private:
  void byte(Kex::U8 one) { value_ = (value_ ^ one) * 0x100000001b3; }

  std::uint64_t value_ = 0xcbf29ce484222325;
};

}  // namespace explore
