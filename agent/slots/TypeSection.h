// The list of types that a plug-in file carries.
#pragma once

#include <string>
#include <vector>

namespace Agent {

/// Full names of the types in the section `.kex.type` of the ELF library `file`, in their order:
/// every maximal run of non-zero bytes is one. The file is read, not loaded. Throws a `Failure`
/// when it cannot be read, is no ELF library, or has no such section or no name in it.
std::vector<std::string> readTypeSection(std::string const& file);

}  // namespace Agent
