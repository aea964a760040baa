// The last of what happened in a slot, in a bounded memory.
#pragma once

#include <cstring>

#include "agent/recording/ByteQueue.h"
#include "agent/recording/RecordingSink.h"

namespace Agent {

/// Keeps the last transactions and lines of a slot. Transactions that are alike one after the other
/// (a supply that is checked, an empty slot that is polled) are counted, so that a minute and a
/// night cost the same. Nothing is allocated while they are.
class FlightRing {
 public:
  /// The most transactions that are told of one by one.
  static constexpr std::size_t kMost = 256;
  /// Longest line that is kept.
  static constexpr std::size_t kLongestLine = 3072;

  /// `makeStart` makes the line that begins a recording.
  using MakeStart = std::function<std::string(Beginning const&)>;

  /// Counts the transaction of `client`, which has just ended, if it is as the one before.
  bool isRepeated(Smbus::Client const& client, Smbus::Transaction const& transaction,
                  Smbus::Reply const& reply, double now) {
    bool const isSame = &client == client_ && transaction.readLength == asked_.readLength &&
                        transaction.address == asked_.address &&
                        isEqual(transaction.write, asked_.write) && isEqual(reply, reply_);
    if (isSame) {
      ++newest_.repeats;
      newest_.last = now;
    }
    return isSame;
  }
  /// Appends a transaction that is not. `beginning` is there if a detection begins with it.
  void transactionIs(Smbus::Client const& client, Smbus::Transaction const& transaction,
                     Smbus::Reply const& reply, double now, Beginning const* beginning);
  /// Appends a line, unless it is longer than `kLongestLine` bytes; whether it is of a supply.
  void lineIs(std::string const& line, bool isSupply);

  /// Tells of all that can be replayed, which begins with a detection: the supply that was there
  /// before, the start, and what followed. Of everything if no detection began in it.
  void tell(RecordingSink& sink, MakeStart const& makeStart);

 private:
  /// What each piece begins with.
  enum class Piece : char { transactions, beginning, supply, other };

  /// Transactions that are alike; behind it stand what was written, and what was read or why not.
  struct Run {
    Piece kind = Piece::transactions;
    bool isOk = false;
    Smbus::ErrorKind error = Smbus::ErrorKind::other;
    Kex::U8 readLength = 0;
    Kex::U8 written = 0;
    Kex::U32 repeats = 0;
    double first = 0;
    double last = 0;
    char const* request = "";
    Kex::U64 address = 0;
  };

  static constexpr std::size_t kBytes = std::size_t{20} << 10;
  /// Longest text of a failure that is kept.
  static constexpr std::size_t kLongestFailure = 0xFF;

  static bool isEqual(Smbus::Block const& one, Smbus::Block const& other) {
    // All bytes, whatever the length: that is quicker, and unlikeness behind it costs but memory.
    // The last one by itself, since compilers compare 32 bytes in place.
    constexpr std::size_t kLast = Smbus::kMaxBlock - 1;
    return one.length == other.length && one.bytes[kLast] == other.bytes[kLast] &&
           std::memcmp(one.bytes.data(), other.bytes.data(), kLast) == 0;
  }
  static bool isEqual(Smbus::Reply const& one, Smbus::Reply const& other) {
    return one.isOk == other.isOk && isEqual(one.read, other.read) &&
           (one.isOk || (one.error == other.error && one.failure == other.failure));
  }

  static RecordedTransaction decoded(std::string_view piece);
  /// Puts the newest transactions, if there are any, to the others.
  void settle();
  void enqueue(ByteQueue::Parts parts);
  /// Lets the oldest piece go.
  void drop();

  ByteQueue queue_{kBytes};
  std::size_t runs_ = 0;
  /// The line of the supply that was there before the oldest piece; empty for none.
  std::string before_;
  /// The newest transactions; no client: there are none.
  Smbus::Client const* client_ = nullptr;
  Smbus::Transaction asked_;
  Smbus::Reply reply_;
  Run newest_;
  /// Of the last beginning.
  PowerSupplyDetector::Timings timings_;
};

}  // namespace Agent
