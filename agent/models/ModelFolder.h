// Where model files are.
#pragma once

#include <string>
#include <vector>

namespace Agent {

/// `path` itself, or, where it is a folder, its `*.json` in the order of their names. Throws a
/// `Failure` for a folder that cannot be read, or has too many of them.
std::vector<std::string> modelFilesIn(std::string const& path);

/// The folder of the model files that came with the program, as built or as installed.
std::string exampleModels();

}  // namespace Agent
