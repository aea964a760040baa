// FRU image files.
#pragma once

#include <string>
#include <vector>

#include "host/kex/base/Types.h"

namespace Agent {

/// The bytes of the FRU image file `file`; `-` is standard input. Throws a `Failure` when it cannot
/// be read, or has not 1 to 256 bytes.
std::vector<Kex::U8> readFruImage(std::string const& file);

}  // namespace Agent
