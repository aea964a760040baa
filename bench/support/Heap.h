// The heap, counted.
#pragma once

#include <cstdint>

namespace Bench {

/// What the program and the libraries that it loaded asked of the heap.
struct Heap {
  /// Calls of `operator new`, ever.
  std::uint64_t allocations = 0;
  /// Blocks in use.
  std::uint64_t liveBlocks = 0;
  /// Bytes in use, with what the heap keeps beside them and rounds up; how much it rounds up, is
  /// not always the same.
  std::uint64_t liveBytes = 0;
};

/// The counts of this moment; exact as long as one thread allocates.
Heap heap();

/// The process's resident memory in bytes.
std::uint64_t residentBytes();

}  // namespace Bench
