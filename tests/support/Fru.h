// A supply's FRU memory, made from its texts.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "agent/transport/SimulatedSupply.h"

namespace busTest {

/// What a supply answers; its product info area has a part number and a serial number.
struct Fru {
  std::string part = "P";
  std::string serial = "S1";
  unsigned areaStart = 1;  ///< in units of 8 bytes
  unsigned units = 0;      ///< the area's length; 0 is the least that holds it
  char headerVersion = 1;
  char areaVersion = 1;
  std::optional<unsigned> unitsSaid{};  ///< the area's length as it stands in it, if another one
  unsigned spoilt = 0;                  ///< added to the area's checksum
  char language = 0x19;
  std::string mfrId = "EMERSON";

  Agent::SimulatedSupply supply() const {
    // Fields of kind 0, binary: the bytes as they stand.
    auto const field = [](auto const& text) { return static_cast<char>(text.size()) + text; };
    std::string area = std::string{areaVersion, 0, language, 0, 0} + field(part) + '\0';
    area += field(serial) + '\xC1';
    std::size_t const length = units != 0 ? std::size_t{units} * 8 : (area.size() / 8 + 1) * 8;
    area[1] = static_cast<char>(unitsSaid.value_or(static_cast<unsigned>(length / 8)));
    area.resize(length - 1);
    area = checksummed(area, spoilt);
    area.resize(Agent::SimulatedSupply::kLongestImage);
    std::rotate(area.begin(), area.end() - static_cast<std::ptrdiff_t>(areaStart) * 8, area.end());
    area.replace(0, 8, checksummed({headerVersion, 0, 0, 0, static_cast<char>(areaStart), 0, 0}));
    return {std::vector<Kex::U8>(area.begin(), area.end()), mfrId};
  }

 private:
  /// The bytes with the last one added that makes their sum `total`.
  static std::string checksummed(std::string bytes, unsigned total = 0) {
    for (char const byte : bytes) {
      total -= static_cast<unsigned char>(byte);
    }
    return bytes += static_cast<char>(total & 0xff);
  }
};

}  // namespace busTest
