// The seam to the bus: what a transport is asked, and how it answers.
#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "host/kex/base/String8.h"
#include "host/smbus/ErrorKind.h"
#include "host/smbus/VornAddress.h"

namespace Smbus {

/// Largest block of an SMBus block transfer, count byte included.
inline constexpr std::size_t kMaxBlock = 33;

/// A block, count byte first.
struct Block {
  std::array<Kex::U8, kMaxBlock> bytes{};
  Kex::U8 length = 0;

  /// The bytes up to the length, as long as the block stands.
  std::span<Kex::U8 const> view() const { return {bytes.data(), length}; }
};

/// One SMBus transaction, a copy of what a request was loaded with: a block-write/block-read
/// process call, or a plain block read where `write` is empty.
struct Transaction {
  VornAddress address;
  Block write;
  /// Bytes wanted, count byte included, at most `kMaxBlock`.
  Kex::U8 readLength = 0;
};

/// How a transaction ended.
struct Reply {
  bool isOk = false;
  /// What the device answered: count byte, then data. Empty on failure.
  Block read;
  /// What went wrong; of a failure only.
  ErrorKind error = ErrorKind::other;
  /// What went wrong, for a person; empty on success.
  Kex::String8 failure;

  /// What a read of `length` bytes, at most `kMaxBlock`, brings to its buffer: what the device left
  /// out is zero, what it sent beyond is cut.
  Block readOf(Kex::U8 length) const {
    Block block{.length = length};
    std::copy_n(read.bytes.begin(), std::min(read.length, length), block.bytes.begin());
    return block;
  }
  /// The reply to a transaction that failed; `why` is for a person.
  static Reply failed(ErrorKind error, Kex::String8 why) {
    return {.isOk = false, .read = {}, .error = error, .failure = std::move(why)};
  }
  /// The same in the kind's own words.
  static Reply failed(ErrorKind error) { return failed(error, Kex::String8(rowOf(error).text)); }
};

/// Is told how a transaction ended.
class AnswerSink {
 public:
  /// The transaction of `ticket` ended with `reply`.
  virtual void answerIs(Kex::U64 ticket, Reply const& reply) = 0;

 protected:
  AnswerSink() = default;
  AnswerSink(AnswerSink const&) = default;
  AnswerSink& operator=(AnswerSink const&) = default;
  ~AnswerSink() = default;
};

/// Carries out the transactions of one bus. `Smbus::Bus` gives it one at a time and takes each
/// answer once; an answer with a ticket that is not the current one is dropped.
class Transport {
 public:
  Transport() = default;
  Transport(Transport const&) = delete;
  Transport& operator=(Transport const&) = delete;
  virtual ~Transport() = default;

  /// Starts `transaction` and returns at once. The answer is given to `sink` later, never from
  /// inside this call, on the run loop's thread, within the address's bus timeout. Never throws:
  /// what cannot be carried out is answered with the kind of error that it is.
  virtual void start(Transaction const& transaction, Kex::U64 ticket, AnswerSink& sink) = 0;
};

}  // namespace Smbus
