// The root of everything that is counted: allocation, reference count, disposal.
#include "host/kex/VFPtrInterface.h"

#include <new>

#include "host/kex/PtrInterface.h"

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
    delete this;
  }
}

void VFPtrInterface::newRef() const {
  if (enableThreadSafePointers.load(std::memory_order_relaxed)) {
    refs_.fetch_add(1, std::memory_order_relaxed);
  } else {
    refs_.store(refs_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  }
}

void VFPtrInterface::deleteRef() const {
  U32 left = 0;
  if (enableThreadSafePointers.load(std::memory_order_relaxed)) {
    left = refs_.fetch_sub(1, std::memory_order_acq_rel) - 1;
  } else {
    left = refs_.load(std::memory_order_relaxed) - 1;
    refs_.store(left, std::memory_order_relaxed);
  }
  if (left == 0) {
    // Disposal is the object's own right, whatever the reference through which it was held.
    const_cast<VFPtrInterface*>(this)->handleZeroRef();
  }
}

}  // namespace Kex
