// What fuzzers of the slot share: an honest supply's image, the descriptors, a slot.
#pragma once

#include <array>
#include <memory>

#include "host/detector/SlotDriver.h"
#include "host/smbus/Transport.h"

namespace Fuzz {

/// FRU image of a DS2900: common header, then a product info area of 40 bytes.
extern std::array<Kex::U8, 48> const kImage;
inline constexpr char kSerialNumber[] = "S12345";

/// Puts all descriptors into the registry, and takes out what else is there.
void registerDescriptors();

/// A slot with an identifier at work.
struct SlotParts {
  explicit SlotParts(std::unique_ptr<Smbus::Transport> transport);
  SlotParts(SlotParts const&) = delete;
  SlotParts& operator=(SlotParts const&) = delete;
  ~SlotParts();

  Kex::Ptr<Hardware::Vorn> vorn;
  Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus> status;
  Kex::Ptr<PowerSupplyDetector::SlotDriver> driver;
};

}  // namespace Fuzz
