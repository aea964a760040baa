// The supplies that may be in the slot, and what an answer of theirs may be spoilt in.
#include "tests/explore/Supplies.h"

#include <algorithm>

#include "host/kex/base/Format.h"
#include "tests/support/Fru.h"

namespace explore {

namespace {

struct Known {
  Agent::SimulatedSupply answers;
  Kex::String8 fdl;
  std::array<Kex::U8, kAreaEnd - kArea> area;

  explicit Known(busTest::Fru const& fru)
      : answers(fru.supply()), fdl(fdlOf(fru.part.c_str(), fru.serial.c_str())), area(areaOf()) {}

 private:
  decltype(area) areaOf() const {
    Smbus::Transaction read{.address = {}, .write = {}, .readLength = 1 + kAreaEnd - kArea};
    read.address.deviceIs(Smbus::U7(Agent::SimulatedSupply::kDevice));
    read.address.offsetIs(kFruCommand);
    read.write = {.bytes = {1, kArea}, .length = 2};
    decltype(area) bytes;
    std::ranges::copy(answers.answer(read).read.view().subspan(1), bytes.begin());
    return bytes;
  }
};

Known const& known(Supply supply) {
  static Known const all[] = {Known({.part = kFirstPart, .serial = "Z"}),
                              Known({.part = kSecondPart, .serial = "Z"}),
                              Known({.part = kSecondPart, .serial = ""})};
  return all[supply];
}

}  // namespace

Agent::SimulatedSupply const& answersOf(Supply supply) { return known(supply).answers; }

Kex::String8 const& fdlOf(Supply supply) { return known(supply).fdl; }

Kex::String8 fdlOf(char const* part, char const* serial) {
  return Kex::format("model %s, serial number %s", part, serial);
}

unsigned suppliesWith(std::span<Kex::U8 const> bytes) {
  unsigned supplies = 0;
  for (unsigned supply = 0; supply < kSupplies; ++supply) {
    auto const& area = known(Supply{supply}).area;
    bool const fits =
        bytes.size() <= area.size() && std::equal(bytes.begin(), bytes.end(), area.begin());
    supplies |= (fits ? 1U : 0U) << supply;
  }
  return supplies;
}

}  // namespace explore
