// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace Agent {

/// Owns an open file descriptor; none below 0.
class OwnedFile {
 public:
  explicit OwnedFile(int number = -1) : number_(number) {}
  OwnedFile(OwnedFile&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  OwnedFile& operator=(OwnedFile&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~OwnedFile() {
    if (number_ >= 0) {
      ::close(number_);
    }
  }

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

 private:
  int number_;
};

}  // namespace Agent
