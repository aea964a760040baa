// Assertions on our own promises, on in every build.
#include "host/kex/base/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Kex {

void assertionFailed(char const* text, std::source_location const& where) {
  std::fprintf(stderr, "%s:%u: assertion failed: %s\n", where.file_name(),
               static_cast<unsigned>(where.line()), text);
  std::abort();
}

}  // namespace Kex
