// What a slot knows of its supply, as identification found it.
#pragma once

#include <optional>

#include "host/kex/base/Export.h"
#include "host/kex/base/String8.h"

namespace Hardware::PowerSupplySlot {

/// How the last detection of a slot ended.
enum class Verdict : Kex::U8 {
  absent,                   ///< nothing answers
  unsupportedManufacturer,  ///< the MFR_ID is not one that an identifier accepts
  invalidHeader,            ///< the FRU common header is not one of IPMI FRU version 1
  unreadable,               ///< the supply answers, but reading it failed
  unsupportedVersion,       ///< the product info area has another format version than 1
  invalidChecksum,          ///< the product info area's checksum is wrong
  unrecognised,             ///< no descriptor knows the supply
  identified,               ///< a descriptor manages the supply
};

/// The verdict as it is written: "absent", ...
KEX_API char const* verdictName(Verdict verdict);

/// The texts of a product info area, as stored. The serial number is the one read last.
struct ProductTexts {
  Kex::String8 manufacturerName;
  Kex::String8 productName;
  Kex::String8 partNumber;
  Kex::String8 productVersion;
  Kex::String8 serialNumber;

  bool operator==(ProductTexts const&) const = default;
};

/// The outcome of one detection.
struct Supply {
  Verdict verdict = Verdict::absent;
  /// Why the supply is not identified, for a person; empty when it is. Bytes that came from the
  /// supply stand in it as they are.
  Kex::String8 reason;
  /// The text that answered the MFR_ID command; none when it could not be read.
  std::optional<Kex::String8> mfrId;
  /// Short name of the descriptor's type; none when there is no descriptor.
  std::optional<Kex::String8> descriptor;
  /// None when no product info area was read.
  std::optional<ProductTexts> product;
  /// None before an identification has ended.
  std::optional<bool> hwError;
  /// Transactions that were started, retries included, from the start of the detection to
  /// its verdict.
  Kex::U64 transactions = 0;
  /// The FDL text; empty unless identified.
  Kex::String8 fdl;
};

}  // namespace Hardware::PowerSupplySlot
