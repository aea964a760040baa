// Assertions on our own promises, on in every build.
#pragma once

#include <source_location>

#include "host/kex/base/Export.h"

namespace Kex {

[[noreturn]] KEX_API void assertionFailed(char const* text, std::source_location const& where);

/// Prints `text` with file and line and aborts when `holds` is false. For broken promises of our
/// own; nothing that comes from a bus, a file or a command line may reach one.
inline void assertThat(bool holds, char const* text,
                       std::source_location where = std::source_location::current()) {
  if (!holds) [[unlikely]] {
    assertionFailed(text, where);
  }
}

}  // namespace Kex
