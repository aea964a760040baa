// The last of what happened in a slot, in a bounded memory.
#include "agent/recording/FlightRing.h"

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <utility>

namespace Agent {

namespace {

template <class Value>
std::string_view bytesOf(Value const& value) {
  static_assert(std::is_trivially_copyable_v<Value>);
  return {reinterpret_cast<char const*>(&value), sizeof(Value)};
}

std::string_view bytesOf(Smbus::Block const& block) {
  return {reinterpret_cast<char const*>(block.bytes.data()), block.length};
}

/// The value that `bytes` begin with.
template <class Value>
Value valueOf(std::string_view bytes) {
  Value value;
  std::memcpy(&value, bytes.data(), sizeof(Value));
  return value;
}

Smbus::Block blockOf(std::string_view bytes) {
  Smbus::Block block{.length = static_cast<Kex::U8>(bytes.size())};
  std::ranges::copy(bytes, block.bytes.begin());
  return block;
}

}  // namespace

void FlightRing::transactionIs(Smbus::Client const& client, Smbus::Transaction const& transaction,
                               Smbus::Reply const& reply, double now, Beginning const* beginning) {
  settle();
  if (beginning != nullptr) {
    if (std::exchange(timings_, beginning->timings) != beginning->timings) {
      // At other intervals a replay would not follow what was before.
      while (!queue_.isEmpty()) {
        drop();
      }
    }
    enqueue({bytesOf(Piece::beginning), bytesOf(*beginning)});
  }
  client_ = &client;
  asked_ = transaction;
  reply_ = reply;
  newest_ = {.first = now, .last = now, .request = client.name()};
}

void FlightRing::lineIs(std::string const& line, bool isSupply) {
  if (line.size() > kLongestLine) {
    return;
  }
  settle();
  enqueue({bytesOf(isSupply ? Piece::supply : Piece::other), line});
}

void FlightRing::settle() {
  if (std::exchange(client_, nullptr) == nullptr) {
    return;
  }
  newest_.address = asked_.address.encoded();
  newest_.readLength = asked_.readLength;
  newest_.isOk = reply_.isOk;
  newest_.error = reply_.error;
  newest_.written = asked_.write.length;
  std::string_view const answered =
      reply_.isOk ? bytesOf(reply_.read).substr(0, asked_.readLength) : reply_.failure.view();
  enqueue({bytesOf(newest_), bytesOf(asked_.write), answered.substr(0, kLongestFailure)});
  ++runs_;
  while (runs_ > kMost) {
    drop();
  }
}

void FlightRing::enqueue(ByteQueue::Parts parts) {
  while (!queue_.enqueue(parts)) {
    drop();
  }
}

void FlightRing::drop() {
  std::string_view const piece = queue_.dequeue();
  auto const kind = static_cast<Piece>(piece.front());
  if (kind == Piece::supply) {
    before_ = piece.substr(1);
  }
  runs_ -= std::size_t{kind == Piece::transactions};
}

RecordedTransaction FlightRing::decoded(std::string_view piece) {
  auto const run = valueOf<Run>(piece);
  TransactionRecord record;
  record.time = run.first;
  record.request = run.request;
  record.transaction.address = Smbus::VornAddress(run.address);
  record.transaction.readLength = run.readLength;
  record.transaction.write = blockOf(piece.substr(sizeof(Run), run.written));
  piece.remove_prefix(sizeof(Run) + run.written);
  record.isOk = run.isOk;
  record.error = run.error;
  if (run.isOk) {
    record.read = blockOf(piece);
    record.read.length = run.readLength;
  } else {
    record.failure = piece;
  }
  return {.record = std::move(record),
          .line = 0,
          .unknown = "",
          .repeats = run.repeats,
          .until = run.last};
}

void FlightRing::tell(RecordingSink& sink, MakeStart const& makeStart) {
  settle();
  bool isBeforeStart = false;
  queue_.forEach([&](std::string_view piece) {
    isBeforeStart |= static_cast<Piece>(piece.front()) == Piece::beginning;
  });
  std::string before = before_;
  queue_.forEach([&](std::string_view piece) {
    auto const kind = static_cast<Piece>(piece.front());
    std::string_view const rest = piece.substr(1);
    if (kind == Piece::beginning) {
      if (std::exchange(isBeforeStart, false)) {
        if (!before.empty()) {
          sink.lineIs(before);
        }
        sink.lineIs(makeStart(valueOf<Beginning>(rest)));
      }
    } else if (!isBeforeStart) {
      kind == Piece::transactions ? sink.transactionIs(decoded(piece))
                                  : sink.lineIs(std::string(rest));
    } else if (kind == Piece::supply) {
      before = rest;
    }
  });
}

}  // namespace Agent
