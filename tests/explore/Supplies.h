// The supplies that may be in the slot, and what an answer of theirs may be spoilt in.
#pragma once

#include <array>
#include <optional>
#include <span>

#include "agent/transport/SimulatedSupply.h"

namespace explore {

/// Two models with the same serial number, and one of the second model that has none.
enum Supply : unsigned { kA, kB, kBWithoutSerial, kSupplies };

/// The part numbers of the two models.
inline constexpr char kFirstPart[] = "E";
inline constexpr char kSecondPart[] = "S";
/// By which a supply's FRU memory is read.
inline constexpr Kex::U8 kFruCommand = 0xB0;

Agent::SimulatedSupply const& answersOf(Supply supply);
/// The FDL that tells which supply it is.
Kex::String8 fdlOf(char const* part, char const* serial);
Kex::String8 const& fdlOf(Supply supply);
/// The supplies whose product info areas begin with `bytes`, a bit each.
unsigned suppliesWith(std::span<Kex::U8 const> bytes);

/// The product info area of each, in its FRU memory: the least that has a serial number.
inline constexpr unsigned kArea = 8;
inline constexpr unsigned kAreaEnd = 24;

/// Of the area's bytes these decide something. The masks, and the letters of the supplies, are such
/// that no mixture of what the supplies answer has a valid checksum: eight bits would let one of
/// 256 through, which is no fault of who reads it.
struct Flip {
  char const* what;
  /// Its address in the supply's FRU memory; none is the first byte of MFR_ID.
  std::optional<unsigned> address;
  Kex::U8 mask;
};
inline constexpr auto kFlips = std::to_array<Flip>({
    {"MFR_ID", std::nullopt, 0x20},
    {"the header's version", 0, 0x02},
    {"the area's offset", 4, 0x02},
    {"the header's checksum", 7, 0x10},
    {"the area's version", kArea, 0x02},
    {"the area's length", kArea + 1, 0x03},
    {"the part number", 14, 0x08},
    {"the serial number's length", 16, 0x02},
    {"the serial number", 17, 0x08},
    {"the area's checksum", kAreaEnd - 1, 0x80},
});

}  // namespace explore
