// What a slot knows of its supply, as identification found it.
#pragma once

#include <optional>

#include "host/hardware/Verdict.h"
#include "host/ipmi/ProductInfoArea.h"

namespace Hardware::PowerSupplySlot {

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
  /// The product info area that identification read; null when none was read.
  Kex::Ptr<Ipmi::ProductInfoArea const> product;
  /// None before an identification has ended.
  std::optional<bool> hwError;
  /// Transactions that were started, retries included, from the start of the detection to
  /// its verdict.
  Kex::U64 transactions = 0;
  /// The FDL text; empty unless identified.
  Kex::String8 fdl;
};

}  // namespace Hardware::PowerSupplySlot
