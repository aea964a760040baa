// A transfer buffer of the identifier: created once, reused by every transaction.
#pragma once

#include <utility>

#include "host/hal/Buf.h"
#include "host/kex/entity/NamedMembers.h"

namespace Emerson::PmbusIdentifier {

/// Holds one of the identifier's buffers.
class TransferBuf {
 public:
  using BufPtr = Kex::Ptr<Hal::Buf>;

  /// A new write buffer always has length 2: the count byte and the offset of a FRU read.
  static constexpr Kex::U32 kWriteLength = 2;
  /// What the buffer serves.
  enum class Use : Kex::U8 { write, read };

  /// None as yet; `members` has it under `name`.
  TransferBuf(Use use, Kex::NamedMembers& members, char const* name)
      : use_(use), buf_(members, name) {}

  BufPtr const& buf() const { return buf_.ptr(); }
  /// A new buffer of `size` bytes. Throws a range exception where a write buffer's length does not
  /// fit.
  BufPtr create(Kex::U32 size) const {
    auto buffer = Kex::make<Hal::Buf>(size);
    if (use_ == Use::write) {
      buffer->lenIs(kWriteLength);
    }
    return buffer;
  }
  /// Gives the buffer that exists the capacity `size`, or makes one of that size.
  BufPtr const& sizeIs(Kex::U32 size) {
    if (buf()) {
      buf()->sizeIs(size);
    } else {
      buf_.ptrIs(create(size));
    }
    size_ = size;
    return buf();
  }
  /// Puts a buffer right that somebody else has taken away, or left too small for transfers of
  /// `length` bytes.
  void repair(Kex::U32 length) {
    if (!buf() || size_ < length) {
      sizeIs(length);
    }
    if (use_ == Use::write) {
      buf()->lenIs(kWriteLength);
    }
  }
  /// Clears the buffer and returns the one that was there, null if there was none.
  BufPtr del() { return buf_.ptrIs({}); }

 private:
  Use use_;
  Kex::U32 size_ = 0;
  Kex::NamedMembers::Member<Hal::Buf> buf_;
};

}  // namespace Emerson::PmbusIdentifier
