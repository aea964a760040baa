// What a file must be to be read as input, and what must not be done to it.
#pragma once

#include <cstdint>
#include <string>

namespace Agent {

/// Throws a `Failure` that begins with the name unless `file` is a regular file (a link to one
/// included) of at most `most` bytes: a device or a pipe may never end, or never begin.
void checkInputFile(std::string const& file, std::uintmax_t most);

/// Throws a `UsageError` when `written`, the value of `option`, is the regular file `read`, by
/// whichever name: it would be overwritten.
void checkIsNotRead(std::string const& option, std::string const& written, std::string const& read);

}  // namespace Agent
