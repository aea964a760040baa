// Pieces of bytes in a bounded memory.
#include "agent/recording/ByteQueue.h"

#include <algorithm>

namespace Agent {

void ByteQueue::enqueue(std::string_view piece) {
  char const length[kPrefix] = {static_cast<char>(piece.size() >> 8),
                                static_cast<char>(piece.size())};
  append({length, kPrefix});
  append(piece);
}

std::string_view ByteQueue::dequeue() {
  copy(0, taken_);
  std::size_t const length = kPrefix + taken_.size();
  first_ = (first_ + length) % bytes_.size();
  used_ -= length;
  return taken_;
}

void ByteQueue::forEach(std::function<void(std::string_view)> const& visit) const {
  std::string piece;
  for (std::size_t at = 0; at < used_; at += kPrefix + piece.size()) {
    copy(at, piece);
    visit(piece);
  }
}

void ByteQueue::append(std::string_view bytes) {
  for (char const byte : bytes) {
    bytes_[(first_ + used_++) % bytes_.size()] = byte;
  }
}

void ByteQueue::copy(std::size_t at, std::string& piece) const {
  auto const high = static_cast<unsigned char>(byteAt(at));
  auto const low = static_cast<unsigned char>(byteAt(at + 1));
  piece.resize(std::size_t{high} << 8 | low);
  for (char& byte : piece) {
    byte = byteAt(kPrefix + at++);
  }
}

}  // namespace Agent
