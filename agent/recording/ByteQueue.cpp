// Pieces of bytes in a bounded memory.
#include "agent/recording/ByteQueue.h"

#include <algorithm>

namespace Agent {

bool ByteQueue::enqueue(Parts parts) {
  std::size_t length = 0;
  for (std::string_view const part : parts) {
    length += part.size();
  }
  if (length > kLongest || used_ + kPrefix + length > bytes_.size()) {
    return false;
  }
  char const prefix[kPrefix] = {static_cast<char>(length >> 8), static_cast<char>(length)};
  append({prefix, kPrefix});
  for (std::string_view const part : parts) {
    append(part);
  }
  return true;
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
  std::size_t const begin = (first_ + used_) % bytes_.size();
  std::size_t const upToEnd = std::min(bytes.size(), bytes_.size() - begin);
  std::copy_n(bytes.begin(), upToEnd, &bytes_[begin]);
  if (upToEnd != bytes.size()) {
    std::copy(bytes.begin() + upToEnd, bytes.end(), bytes_.begin());
  }
  used_ += bytes.size();
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
