// The makers whose supplies an identifier accepts, as a person is told of them.
#pragma once

#include "host/kex/notify/PtrInterface.h"

namespace PowerSupplyDetector {

/// `reason`, and the MFR_ID texts that `identifier` accepts by its collection "mfrIdSupported",
/// sorted: `REASON, only "ARTESYN", "EMERSON"`. The reason alone where its type declares no such
/// collection, or nothing is accepted.
Kex::String8 withAcceptedMakers(Kex::String8 const& reason, Kex::PtrInterface& identifier);

}  // namespace PowerSupplyDetector
