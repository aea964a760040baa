// The fuzzer's bytes, taken one piece at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Fuzz {

/// Takes pieces from the front; when nothing is left, they are zero or empty.
class Input {
 public:
  Input(std::uint8_t const* data, std::size_t size) : rest_(data, size) {}

  bool isEmpty() const { return rest_.empty(); }
  std::uint8_t byte() {
    auto const taken = bytes(1);
    return taken.empty() ? std::uint8_t{0} : taken.front();
  }
  std::span<std::uint8_t const> bytes(std::size_t most) {
    auto const taken = rest_.first(std::min(most, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  /// A text whose length is the next byte, modulo `most` + 1.
  std::string text(std::size_t most) {
    auto const taken = bytes(byte() % (most + 1));
    return {taken.begin(), taken.end()};
  }
  std::span<std::uint8_t const> rest() { return bytes(rest_.size()); }

 private:
  std::span<std::uint8_t const> rest_;
};

/// Ends the run: a promise does not hold.
inline void require(bool holds) {
  if (!holds) {
    __builtin_trap();
  }
}

}  // namespace Fuzz
