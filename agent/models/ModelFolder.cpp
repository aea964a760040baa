// Where model files are.
#include "agent/models/ModelFolder.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "agent/base/Error.h"

namespace Agent {

namespace fs = std::filesystem;

std::vector<std::string> modelFilesIn(std::string const& path) {
  constexpr std::size_t kMostFiles = 200;
  std::error_code error;
  if (!fs::is_directory(path, error)) {
    return {path};
  }
  std::vector<std::string> files;
  for (fs::directory_iterator at(path, error), end; !error && at != end; at.increment(error)) {
    if (at->path().extension() == ".json") {
      files.push_back(at->path().string());
    }
    if (files.size() > kMostFiles) {
      throw Failure(path + ": has more than " + std::to_string(kMostFiles) + " model files");
    }
  }
  if (error) {
    throw Failure(path + ": cannot be read: " + systemError(error.value()));
  }
  std::ranges::sort(files);
  return files;
}

std::string exampleModels() {
  std::error_code error;
  auto const folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  auto const asBuilt = folder / "models";
  return fs::exists(asBuilt, error)
             ? asBuilt.string()
             : (folder / PSU_MODELDIR_FROM_BINDIR).lexically_normal().string();
}

}  // namespace Agent
