// A plug-in whose initialiser throws what PSU_THROWN says.
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "host/kex/base/Exception.h"

/// Visible, so that the linker keeps it.
[[gnu::visibility("default"), gnu::section(".kex.type")]] extern char const kTypes[] =
    "Test::Thrown";

namespace {

[[maybe_unused]] bool const isThrown = []() -> bool {
  char const* const set = std::getenv("PSU_THROWN");
  std::string_view const thrown = set == nullptr ? "" : set;
  if (thrown == "number") {
    throw 42;
  }
  if (thrown == "framework") {
    Kex::throwRangeException("out of range");
  }
  throw std::runtime_error("a text");
}();

}  // namespace
