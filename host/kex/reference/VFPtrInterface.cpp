// The root of everything that is counted: allocation, reference count, disposal.
#include "host/kex/reference/VFPtrInterface.h"

#include <new>

namespace Kex {

namespace {
std::atomic<std::size_t> liveCount{0};

void* counted(void* memory) {
  liveCount.fetch_add(1, std::memory_order_relaxed);
  return memory;
}

}  // namespace

std::atomic<bool> VFPtrInterface::enableThreadSafePointers{false};

void* VFPtrInterface::operator new(std::size_t size) { return counted(::operator new(size)); }

void* VFPtrInterface::operator new(std::size_t size, std::align_val_t alignment) {
  return counted(::operator new(size, alignment));
}

void VFPtrInterface::operator delete(void* memory) noexcept {
  liveCount.fetch_sub(1, std::memory_order_relaxed);
  ::operator delete(memory);
}

void VFPtrInterface::operator delete(void* memory, std::align_val_t alignment) noexcept {
  liveCount.fetch_sub(1, std::memory_order_relaxed);
  ::operator delete(memory, alignment);
}

std::size_t VFPtrInterface::liveObjects() { return liveCount.load(std::memory_order_relaxed); }

VFPtrInterface::~VFPtrInterface() = default;

void VFPtrInterface::handleZeroRef() {
  if (!isNondestructing_) {
    // Destructors may refer to the object once more: that must not dispose of it again.
    newRef();
    delete this;
  }
}

}  // namespace Kex
