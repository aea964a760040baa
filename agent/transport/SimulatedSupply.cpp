// A power supply that is simulated from a FRU image.
#include "agent/transport/SimulatedSupply.h"

#include <algorithm>

namespace Agent {

namespace {

constexpr Kex::U8 kFruCommand = 0xB0;
constexpr Kex::U8 kFruChunk = 16;

}  // namespace

SimulatedSupply::SimulatedSupply(std::span<Kex::U8 const> image, std::string_view mfrId) {
  image_.fill(0xFF);
  std::ranges::copy(image.first(std::min(image.size(), kLongestImage)), image_.begin());
  mfrId = mfrId.substr(0, kLongestMfrId);
  mfrId_.bytes[0] = static_cast<Kex::U8>(mfrId.size());
  std::ranges::copy(mfrId, mfrId_.bytes.begin() + 1);
  mfrId_.length = static_cast<Kex::U8>(mfrId.size() + 1);
}

bool SimulatedSupply::isPresentAt(Smbus::VornAddress address) {
  return address.device() == kDevice;
}

Smbus::Reply SimulatedSupply::answer(Smbus::Transaction const& transaction) const {
  if (isPresentAt(transaction.address)) {
    Smbus::Block const& write = transaction.write;
    Kex::U8 const command = transaction.address.offset();
    if (command == kMfrIdCommand && write.length == 0) {
      return {.isOk = true, .read = mfrId_, .failure = {}};
    }
    if (command == kFruCommand && write.length == 2 && write.bytes[0] == 1) {
      return fruBytes(write.bytes[1]);
    }
  }
  return Smbus::Reply::failed(Smbus::ErrorKind::noAcknowledge);
}

Smbus::Reply SimulatedSupply::fruBytes(Kex::U8 start) const {
  Smbus::Reply reply{.isOk = true, .read = {}, .failure = {}};
  reply.read.length = kFruChunk + 1;
  reply.read.bytes[0] = kFruChunk;
  for (Kex::U8 i = 0; i < kFruChunk; ++i) {
    reply.read.bytes[i + 1U] = image_[static_cast<Kex::U8>(start + i)];
  }
  return reply;
}

}  // namespace Agent
