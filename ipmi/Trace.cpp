// The trace handle of the descriptor module.
#include "ipmi/Trace.h"

namespace Emerson::IpmiIdentifier {

Kex::TraceHandle& traceHandle() {
  static Kex::TraceHandle handle("EmersonIpmiIdentifier", false);
  return handle;
}

}  // namespace Emerson::IpmiIdentifier
