// The root of everything that is counted: allocation, reference count, disposal.
#pragma once

#include <atomic>
#include <cstddef>
#include <new>

#include "host/kex/base/Export.h"
#include "host/kex/base/Types.h"

namespace Kex {

class KexType;

/// Reference-counted object. Objects are made with `new` (which is `operator new` below) and held
/// by `Kex::Ptr`; at the last release `handleZeroRef()` disposes of them.
class KEX_API VFPtrInterface {
 public:
  /// While set, counts change atomically, so that references may be shared between threads. Set it
  /// before the second thread starts.
  static std::atomic<bool> enableThreadSafePointers;

  /// Memory for an object; counts it.
  static void* operator new(std::size_t size);
  /// The same for a class that is aligned more strictly than the machine's types are.
  static void* operator new(std::size_t size, std::align_val_t alignment);
  /// Frees what `operator new` gave.
  static void operator delete(void* memory) noexcept;
  static void operator delete(void* memory, std::align_val_t alignment) noexcept;

  /// Objects that `operator new` has made and that are not freed yet; for leak checks.
  static std::size_t liveObjects();

  VFPtrInterface() = default;
  VFPtrInterface(VFPtrInterface const&) = delete;
  VFPtrInterface& operator=(VFPtrInterface const&) = delete;

  /// The record of the object's own type.
  virtual KexType& fwkType() const = 0;
  virtual ~VFPtrInterface();
  /// Called when the last reference is dropped; deletes the object.
  virtual void handleZeroRef();

  /// Adds a reference. Used by `Kex::Ptr` only.
  void newRef() const {
    if (enableThreadSafePointers.load(std::memory_order_relaxed)) {
      refs_.fetch_add(1, std::memory_order_relaxed);
    } else {
      refs_.store(refs_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
  }
  /// Drops a reference. Used by `Kex::Ptr` only.
  void deleteRef() const {
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
  /// Number of references.
  U32 refCount() const { return refs_.load(std::memory_order_relaxed); }

  /// An object marked so outlives its last reference.
  bool isNondestructing() const { return isNondestructing_; }

 protected:
  /// See `isNondestructing`.
  bool isNondestructing_ = false;

 private:
  mutable std::atomic<U32> refs_{0};
};

}  // namespace Kex
