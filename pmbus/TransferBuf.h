// A transfer buffer of the identifier: created once, reused by every transaction.
#pragma once

#include <utility>

#include "host/hal/Buf.h"

namespace Emerson::PmbusIdentifier {

/// Holds one of the identifier's buffers.
class TransferBuf {
 public:
  using BufPtr = Kex::Ptr<Hal::Buf>;

  /// A new write buffer always has length 2: the count byte and the offset of a FRU read.
  static constexpr Kex::U32 kWriteLength = 2;
  /// What the buffer serves.
  enum class Use : Kex::U8 { write, read };

  explicit TransferBuf(Use use) : use_(use) {}

  BufPtr const& buf() const { return buf_; }
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
    if (buf_) {
      buf_->sizeIs(size);
    } else {
      buf_ = create(size);
    }
    return buf_;
  }
  /// Clears the buffer and returns the one that was there, null if there was none.
  BufPtr del() { return std::exchange(buf_, {}); }

 private:
  Use use_;
  BufPtr buf_;
};

}  // namespace Emerson::PmbusIdentifier
