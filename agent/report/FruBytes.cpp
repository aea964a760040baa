// What is known of a supply's FRU data.
#include "agent/report/FruBytes.h"

#include <algorithm>

namespace Agent {

bool isFruRead(Smbus::Transaction const& transaction) {
  return transaction.write.length == 2 && transaction.write.bytes[0] == 1;
}

void FruBytes::recordIs(TransactionRecord const& record) {
  if (!record.isOk || !isFruRead(record.transaction)) {
    return;
  }
  Kex::U8 address = record.transaction.write.bytes[1];
  auto const block = record.read.view();
  std::size_t const count = std::min<std::size_t>(block[0], block.size() - 1);
  for (Kex::U8 const byte : block.subspan(1, count)) {
    bytes_[address++] = byte;
  }
}

void FruBytes::imageIs(std::span<Kex::U8 const> image) {
  std::ranges::copy(image.first(std::min(image.size(), bytes_.size())), bytes_.begin());
}

std::vector<Kex::U8> FruBytes::from(Kex::U8 start, std::size_t most) const {
  std::vector<Kex::U8> bytes;
  for (Kex::U8 address = start; bytes.size() < most; ++address) {
    std::optional<Kex::U8> const byte = bytes_[address];
    if (!byte) {
      break;
    }
    bytes.push_back(*byte);
  }
  return bytes;
}

}  // namespace Agent
