// A power supply that is simulated from a FRU image.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "host/smbus/Transport.h"

namespace Agent {

/// What a supply answers, from its FRU image and its MFR_ID. It answers at device 0x58:
///
/// | command | transaction             | answer                                              |
/// |---------|-------------------------|-----------------------------------------------------|
/// | 0x99    | block read              | the MFR_ID                                          |
/// | 0xB0    | process call {1, start} | 16 bytes of the image from start on; the addresses  |
/// |         |                         | wrap at 256, bytes past the image read 0xFF         |
///
/// Everything else is not acknowledged.
class SimulatedSupply {
 public:
  static constexpr Kex::U8 kDevice = 0x58;
  static constexpr Kex::U8 kMfrIdCommand = 0x99;
  static constexpr std::size_t kLongestImage = 256;
  static constexpr std::size_t kLongestMfrId = Smbus::kMaxBlock - 1;

  /// `image` has 1 to 256 bytes, `mfrId` 1 to 32; what is beyond is cut.
  SimulatedSupply(std::span<Kex::U8 const> image, std::string_view mfrId);

  Smbus::Reply answer(Smbus::Transaction const& transaction) const;
  /// Whether anything at this address is acknowledged.
  static bool isPresentAt(Smbus::VornAddress address);

 private:
  Smbus::Reply fruBytes(Kex::U8 start) const;

  std::array<Kex::U8, kLongestImage> image_;
  Smbus::Block mfrId_;
};

}  // namespace Agent
