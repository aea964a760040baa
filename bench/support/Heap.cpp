// The heap, counted: replaces the allocation functions of the whole process.
#include "bench/support/Heap.h"

#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <new>

namespace {

/// What the heap keeps beside each block.
constexpr std::size_t kBlockHead = sizeof(std::size_t);

std::atomic<std::uint64_t> allocations{0};
std::atomic<std::uint64_t> frees{0};
std::atomic<std::uint64_t> liveBytes{0};

// Not one indivisible step, which would cost more than the count is worth to a single thread.
void add(std::atomic<std::uint64_t>& count, std::uint64_t amount) {
  count.store(count.load(std::memory_order_relaxed) + amount, std::memory_order_relaxed);
}

}  // namespace

void* operator new(std::size_t size) {
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  add(allocations, 1);
  add(liveBytes, malloc_usable_size(block) + kBlockHead);
  return block;
}

void operator delete(void* block) noexcept {
  if (block != nullptr) {
    add(frees, 1);
    add(liveBytes, std::uint64_t{0} - (malloc_usable_size(block) + kBlockHead));
    std::free(block);
  }
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace Bench {

Heap heap() {
  std::uint64_t const made = allocations.load(std::memory_order_relaxed);
  return {.allocations = made,
          .liveBlocks = made - frees.load(std::memory_order_relaxed),
          .liveBytes = liveBytes.load(std::memory_order_relaxed)};
}

std::uint64_t residentBytes() {
  std::uint64_t total = 0;
  std::uint64_t resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace Bench
