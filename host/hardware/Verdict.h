// How the detection of a slot ended: one row a verdict.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "host/kex/base/Types.h"

namespace Hardware::PowerSupplySlot {

/// How the last detection of a slot ended. A new one is an enumerator here and a row at the same
/// place of `kVerdicts`; what is reported of it, and the agent's exit status, follow from the row.
enum class Verdict : Kex::U8 {
  absent,                   ///< nothing answers
  unreachable,              ///< the bus is in trouble: nobody knows what is there
  unsupportedManufacturer,  ///< the MFR_ID is not one that an identifier accepts
  invalidHeader,            ///< the FRU common header is not one of IPMI FRU version 1
  unreadable,               ///< the supply answers, but reading it failed
  unsupportedVersion,       ///< the product info area has another format version than 1
  invalidChecksum,          ///< the product info area's checksum is wrong
  unrecognised,             ///< no descriptor knows the supply
  identified,               ///< a descriptor manages the supply
  kEnd,                     ///< no verdict
};

/// The stages of a supply's road, in their order. The further one of two verdicts is the one whose
/// road ended at the greater stage.
enum class Stage : Kex::U8 {
  address,       ///< somebody answers
  manufacturer,  ///< the MFR_ID is accepted
  header,        ///< the FRU common header is accepted
  reading,       ///< header, product info area and first check can be read
  area,          ///< the product info area is accepted
  descriptors,   ///< a descriptor manages the supply
  end,           ///< all of it is done
};

/// What a verdict proves of the slot.
enum class Proof : Kex::U8 {
  isEmpty,    ///< no supply is there
  nothing,    ///< the bus is in trouble
  hasSupply,  ///< a supply is there
};

/// All that is known of a verdict.
struct VerdictRow {
  Verdict verdict;
  /// As it is written.
  char const* name;
  /// The stage at which the road ended.
  Stage stage;
  Proof proof;
};

/// Every verdict, in the order of the enumeration and of the road.
inline constexpr std::array kVerdicts = {
    VerdictRow{Verdict::absent, "absent", Stage::address, Proof::isEmpty},
    VerdictRow{Verdict::unreachable, "unreachable", Stage::address, Proof::nothing},
    VerdictRow{Verdict::unsupportedManufacturer, "unsupportedManufacturer", Stage::manufacturer,
               Proof::hasSupply},
    VerdictRow{Verdict::invalidHeader, "invalidHeader", Stage::header, Proof::hasSupply},
    VerdictRow{Verdict::unreadable, "unreadable", Stage::reading, Proof::hasSupply},
    VerdictRow{Verdict::unsupportedVersion, "unsupportedVersion", Stage::area, Proof::hasSupply},
    VerdictRow{Verdict::invalidChecksum, "invalidChecksum", Stage::area, Proof::hasSupply},
    VerdictRow{Verdict::unrecognised, "unrecognised", Stage::descriptors, Proof::hasSupply},
    VerdictRow{Verdict::identified, "identified", Stage::end, Proof::hasSupply},
};

/// The row of `verdict`.
constexpr VerdictRow const& rowOf(Verdict verdict) {
  return kVerdicts[static_cast<std::size_t>(verdict)];
}

/// The verdict as it is written: "absent", ...
constexpr char const* verdictName(Verdict verdict) { return rowOf(verdict).name; }

/// The verdict that is written as `name`; none when there is no such verdict.
constexpr std::optional<Verdict> verdictOf(std::string_view name) {
  for (VerdictRow const& row : kVerdicts) {
    if (row.name == name) {
      return row.verdict;
    }
  }
  return std::nullopt;
}

static_assert(kVerdicts.size() == static_cast<std::size_t>(Verdict::kEnd), "a verdict has no row");
static_assert(std::ranges::all_of(kVerdicts,
                                  [](VerdictRow const& row) {
                                    return &rowOf(row.verdict) == &row;
                                  }),
              "rows stand in the order of the verdicts");
static_assert(std::ranges::is_sorted(kVerdicts, {}, &VerdictRow::stage),
              "verdicts stand in the order of the road");

}  // namespace Hardware::PowerSupplySlot
