// The module's trace handle.
#pragma once

#include "host/kex/trace/Trace.h"

namespace Emerson::PmbusIdentifier {

/// The handle "EmersonPmbusIdentifier": level 3 tells of handlers entered and transfers set up,
/// level 4 of outcomes.
inline Kex::TraceHandle const& traceHandle() {
  static Kex::TraceHandle const handle("EmersonPmbusIdentifier", false);
  return handle;
}

}  // namespace Emerson::PmbusIdentifier
