// What a file must be to be read as input.
#pragma once

#include <cstdint>
#include <string>

namespace Agent {

/// Throws a `Failure` that begins with the name unless `file` is a regular file (a link to one
/// included) of at most `most` bytes: a device or a pipe may never end, or never begin.
void checkInputFile(std::string const& file, std::uintmax_t most);

}  // namespace Agent
