// The module's trace handle.
#include "pmbus/Trace.h"

namespace Emerson::PmbusIdentifier {

Kex::TraceHandle const& traceHandle() {
  static Kex::TraceHandle const handle("EmersonPmbusIdentifier", false);
  return handle;
}

}  // namespace Emerson::PmbusIdentifier
