// The trace handle of the descriptor module.
#pragma once

#include "host/kex/trace/Trace.h"

namespace Emerson::IpmiIdentifier {

/// The handle "EmersonIpmiIdentifier", made on first use and kept until the library is unloaded.
/// Level 0 tells which type examines a supply, level 1 the key that it read.
inline Kex::TraceHandle& traceHandle() {
  static Kex::TraceHandle handle("EmersonIpmiIdentifier", false);
  return handle;
}

}  // namespace Emerson::IpmiIdentifier
