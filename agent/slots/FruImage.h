// FRU image files.
#pragma once

#include <string>
#include <vector>

#include "host/kex/base/Types.h"

namespace Agent {

/// What a one-byte offset can reach, the first 256 bytes at most, of the dump of a FRU memory
/// `file`;
/// `-` is standard input. Throws a `Failure` when it is no regular file, cannot be read, or has not
/// 1 byte to 64 KiB.
std::vector<Kex::U8> readFruImage(std::string const& file);

}  // namespace Agent
