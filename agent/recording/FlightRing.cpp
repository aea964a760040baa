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

/// Takes a value off the beginning of `bytes`.
template <class Value>
Value taken(std::string_view& bytes) {
  Value value;
  std::memcpy(&value, bytes.data(), sizeof(Value));
  bytes.remove_prefix(sizeof(Value));
  return value;
}

Smbus::Block takenBlock(std::string_view& bytes, Kex::U8 length) {
  Smbus::Block block{.length = length};
  std::memcpy(block.bytes.data(), bytes.data(), length);
  bytes.remove_prefix(length);
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
    enqueue(Piece::beginning, {bytesOf(*beginning)});
  }
  client_ = &client;
  asked_ = transaction;
  reply_ = reply;
  newest_ = {.first = now,
             .last = now,
             .address = transaction.address.encoded(),
             .request = requestOf(client.name()),
             .readLength = transaction.readLength,
             .isOk = reply.isOk,
             .error = reply.error,
             .written = transaction.write.length};
}

void FlightRing::lineIs(std::string const& line, bool isSupply) {
  if (line.size() > kLongestLine) {
    return;
  }
  settle();
  enqueue(isSupply ? Piece::supply : Piece::other, {line});
}

Kex::U8 FlightRing::requestOf(Kex::Name const& name) {
  auto found = std::ranges::find(requests_, name);
  if (found == requests_.end()) {
    found = requests_.insert(found, name);
  }
  return static_cast<Kex::U8>(found - requests_.begin());
}

void FlightRing::settle() {
  if (std::exchange(client_, nullptr) == nullptr) {
    return;
  }
  Smbus::Block const read = reply_.isOk ? reply_.readOf(newest_.readLength) : Smbus::Block{};
  std::string_view failure = reply_.isOk ? "" : reply_.failure.view();
  failure = failure.substr(0, 0xFF);
  newest_.read = read.length;
  newest_.failure = static_cast<Kex::U8>(failure.size());
  enqueue(Piece::transactions, {bytesOf(newest_), bytesOf(asked_.write), bytesOf(read), failure});
  ++runs_;
  while (runs_ > kMost) {
    drop();
  }
}

void FlightRing::enqueue(Piece kind, std::initializer_list<std::string_view> parts) {
  piece_.assign(1, static_cast<char>(kind));
  for (std::string_view const part : parts) {
    piece_ += part;
  }
  while (!queue_.hasRoomFor(piece_.size())) {
    drop();
  }
  queue_.enqueue(piece_);
}

void FlightRing::drop() {
  std::string_view const piece = queue_.dequeue();
  auto const kind = static_cast<Piece>(piece.front());
  if (kind == Piece::supply) {
    before_ = piece.substr(1);
  }
  runs_ -= std::size_t{kind == Piece::transactions};
}

RecordedTransaction FlightRing::decoded(std::string_view piece) const {
  Run const run = taken<Run>(piece);
  TransactionRecord record;
  record.time = run.first;
  record.request = std::string(requests_[run.request].str().view());
  record.transaction.address = Smbus::VornAddress(run.address);
  record.transaction.readLength = run.readLength;
  record.transaction.write = takenBlock(piece, run.written);
  record.read = takenBlock(piece, run.read);
  record.isOk = run.isOk;
  record.error = run.error;
  record.failure = std::string(piece);
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
    piece.remove_prefix(1);
    if (kind == Piece::beginning) {
      if (std::exchange(isBeforeStart, false)) {
        if (!before.empty()) {
          sink.lineIs(before);
        }
        sink.lineIs(makeStart(taken<Beginning>(piece)));
      }
    } else if (!isBeforeStart) {
      kind == Piece::transactions ? sink.transactionIs(decoded(piece))
                                  : sink.lineIs(std::string(piece));
    } else if (kind == Piece::supply) {
      before = piece;
    }
  });
}

}  // namespace Agent
