// The root of everything that is counted: allocation, reference count, disposal.
#include "host/kex/reference/VFPtrInterface.h"

#include <new>

#include "host/kex/notify/PtrInterface.h"

namespace Kex {

namespace {
std::atomic<std::size_t> liveCount{0};
}  // namespace

std::atomic<bool> VFPtrInterface::enableThreadSafePointers{false};

void* VFPtrInterface::operator new(std::size_t size) {
  void* memory = ::operator new(size);
  liveCount.fetch_add(1, std::memory_order_relaxed);
  return memory;
}

void VFPtrInterface::operator delete(void* memory) noexcept {
  liveCount.fetch_sub(1, std::memory_order_relaxed);
  ::operator delete(memory);
}

std::size_t VFPtrInterface::liveObjects() { return liveCount.load(std::memory_order_relaxed); }

KexType& VFPtrInterface::fwkType() const { return PtrInterface::_fwkType(); }

VFPtrInterface::~VFPtrInterface() = default;

void VFPtrInterface::handleZeroRef() {
  if (!isNondestructing_) {
    // Destructors may refer to the object once more: that must not dispose of it again.
    newRef();
    delete this;
  }
}

}  // namespace Kex
