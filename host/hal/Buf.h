// Hal::Buf, the byte buffers of bus transfers and FRU areas.
#pragma once

#include <span>
#include <vector>

#include "host/kex/base/Export.h"
#include "host/kex/entity/NamedMembers.h"

namespace Hal {

/// Bytes with a capacity (`size`) and a current length (`len`), both in bytes.
class KEX_API BufBase : public Kex::Owned {
 public:
  /// Largest capacity that may be asked for, in bytes: far above any FRU area, far below what could
  /// exhaust the machine.
  static constexpr Kex::U32 kMaxSize = 65536;

  static Kex::KexType& _fwkType();
  Kex::KexType& fwkType() const override;
  ~BufBase() override;

  /// The capacity in bytes.
  Kex::U32 size() const { return static_cast<Kex::U32>(bytes_.size()); }
  /// The current length in bytes, at most `size`.
  Kex::U32 len() const { return len_; }
  /// Sets the length; the bytes stay as they stand. Throws a range exception beyond the capacity.
  void lenIs(Kex::U32 length);

  /// The byte at `index`. Throws a range exception at or beyond the length.
  Kex::U8 byte(Kex::U32 index) const {
    checkIndex(index);
    return bytes_[index];
  }
  void byteIs(Kex::U32 index, Kex::U8 value) {
    checkIndex(index);
    bytes_[index] = value;
  }
  /// The bytes up to the length.
  std::span<Kex::U8 const> bytes() const { return {bytes_.data(), len_}; }
  /// Puts `bytes` at `offset`. Throws a range exception when they reach beyond the length.
  void bytesIs(Kex::U32 offset, std::span<Kex::U8 const> bytes);

  /// The bytes up to the length as a string.
  Kex::String8 str() const;
  /// Replaces the contents by the string's bytes; grows the capacity where needed. Throws a range
  /// exception above `kMaxSize`.
  void strIs(Kex::String8 const& text);
  /// Appends `bytes`, which may be the buffer's own, up to its length; grows the capacity where
  /// needed. Throws a range exception above `kMaxSize`.
  void doAppend(std::span<Kex::U8 const> bytes);

 protected:
  explicit BufBase(Kex::U32 size);
  void capacityIs(Kex::U32 size);

 private:
  void checkIndex(Kex::U32 index) const {
    if (index >= len_) {
      throwNoByte(index);
    }
  }
  [[noreturn]] void throwNoByte(Kex::U32 index) const;

  std::vector<Kex::U8> bytes_;
  Kex::U32 len_ = 0;
};

/// Where a bus operation puts or takes its bytes. It holds the buffer, so that a late answer never
/// meets one that is gone.
class BufData {
 public:
  explicit BufData(BufBase& buffer) : buffer_(&buffer) {}
  BufBase& buffer() const { return *buffer_; }

 private:
  Kex::Ptr<BufBase> buffer_;
};

/// A buffer of a given capacity; its length is 0, its bytes are zero.
class KEX_API Buf final : public BufBase {
 public:
  static Kex::KexType& _fwkType();

  /// Throws a range exception above `kMaxSize`.
  explicit Buf(Kex::U32 size) : BufBase(size) {}
  Kex::KexType& fwkType() const override;
  ~Buf() override;

  /// Changes the capacity and keeps what fits of contents and length. Throws a range exception
  /// above `kMaxSize`.
  void sizeIs(Kex::U32 size) { capacityIs(size); }
  /// Where an operation of a request puts its bytes, or takes them from; holds the buffer.
  BufData data() { return BufData(*this); }
};

}  // namespace Hal
