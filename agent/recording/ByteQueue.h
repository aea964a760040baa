// Pieces of bytes in a bounded memory.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace Agent {

/// A queue of pieces of bytes in memory that is allocated once.
class ByteQueue {
 public:
  /// What a piece is made of.
  using Parts = std::initializer_list<std::string_view>;

  /// Longest piece in bytes.
  static constexpr std::size_t kLongest = 0xFFFF;

  /// Each piece takes two more bytes of `capacity` than it has.
  explicit ByteQueue(std::size_t capacity) : bytes_(capacity) {}

  bool isEmpty() const { return used_ == 0; }
  /// Appends a piece of `parts`, unless there is no room for it; whether there was.
  bool enqueue(Parts parts);
  /// Takes the oldest piece away; there is one. It stands until something else is done here.
  std::string_view dequeue();
  /// Calls back with each piece, the oldest first.
  void forEach(std::function<void(std::string_view)> const& visit) const;

 private:
  static constexpr std::size_t kPrefix = 2;

  void append(std::string_view bytes);
  /// Copies the piece that begins `at` bytes behind the oldest one's beginning.
  void copy(std::size_t at, std::string& piece) const;
  char byteAt(std::size_t at) const { return bytes_[(first_ + at) % bytes_.size()]; }

  std::vector<char> bytes_;
  std::size_t first_ = 0;
  std::size_t used_ = 0;
  std::string taken_;
};

}  // namespace Agent
