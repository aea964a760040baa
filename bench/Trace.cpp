// What a trace statement costs that is off.
#include "host/kex/trace/Trace.h"

#include <benchmark/benchmark.h>

#include "bench/Subject.h"

namespace Bench {

namespace {

constexpr unsigned kStatements = 1000;

/// Reached as the modules' handles are.
Kex::TraceHandle const& traceHandle() {
  static Kex::TraceHandle const handle("Bench", false);
  return handle;
}

}  // namespace

std::vector<Subject> traceSubjects() {
  auto const statements = [] {
    for (unsigned i = 0; i < kStatements; ++i) {
      Kex::trace(traceHandle(), 4,
                 [&](std::ostream& out) { out << "statement " << i << " of " << kStatements; });
      benchmark::ClobberMemory();
    }
  };
  return {{.name = "trace", .operations = kStatements, .prepare = [=] { return statements; }}};
}

}  // namespace Bench
