// Hal::Buf, the byte buffers of bus transfers and FRU areas.
#pragma once

#include <array>
#include <memory>
#include <span>

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
  Kex::U32 size() const { return size_; }
  /// The current length in bytes, at most `size`.
  Kex::U32 len() const { return len_; }
  /// Sets the length; the bytes stay as they stand. Throws a range exception beyond the capacity.
  void lenIs(Kex::U32 length);

  /// The byte at `index`. Throws a range exception at or beyond the length.
  Kex::U8 byte(Kex::U32 index) const {
    checkIndex(index);
    return start()[index];
  }
  void byteIs(Kex::U32 index, Kex::U8 value) {
    checkIndex(index);
    start()[index] = value;
  }
  /// The bytes up to the length.
  std::span<Kex::U8 const> bytes() const { return {start(), len_}; }
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
  /// What transfers need stands in the buffer itself.
  static constexpr Kex::U32 kOwn = 24;

  Kex::U8 const* start() const { return more_ ? more_.get() : own_.data(); }
  Kex::U8* start() { return more_ ? more_.get() : own_.data(); }
  /// Makes room for `size` bytes, those that there are kept and the others zero, if there is less;
  /// answers what the bytes stood in before.
  std::unique_ptr<Kex::U8[]> grownTo(Kex::U32 size);
  void checkIndex(Kex::U32 index) const {
    if (index >= len_) {
      throwNoByte(index);
    }
  }
  [[noreturn]] void throwNoByte(Kex::U32 index) const;

  Kex::U32 size_ = 0;
  Kex::U32 len_ = 0;
  /// In place of the buffer's own bytes where these are too few.
  std::unique_ptr<Kex::U8[]> more_;
  std::array<Kex::U8, kOwn> own_{};
};

/// Where a bus operation puts or takes its bytes. It does not hold the buffer.
class BufData {
 public:
  explicit BufData(BufBase& buffer) : buffer_(buffer) {}
  BufBase& buffer() const { return buffer_; }

 private:
  BufBase& buffer_;
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
  /// Where an operation of a request puts its bytes, or takes them from.
  BufData data() { return BufData(*this); }
};

}  // namespace Hal
