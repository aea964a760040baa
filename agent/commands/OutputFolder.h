// A folder with the FDL of each source in a file of its own.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "agent/slots/Source.h"

namespace Agent {

/// Files named after the sources: `dir/ds2900.fru` gives `ds2900.fdl`, `i2c:7` gives `i2c-7.fdl`,
/// standard input `stdin.fdl`. A reader sees a whole file or none.
class OutputFolder {
 public:
  /// Makes `folder` where it is not there. Throws a `UsageError` when two of `sources` have the
  /// same file, or one of them would be overwritten, and a `Failure` when there is no such folder
  /// and it cannot be made.
  OutputFolder(std::filesystem::path const& folder, std::vector<Source> const& sources);

  /// Writes the file of the source at this place; an empty FDL takes the file away, since what an
  /// earlier run may have left is not true any more. Throws a `Failure`.
  void fdlIs(std::size_t source, std::string_view fdl) const;

 private:
  std::vector<std::filesystem::path> files_;
};

}  // namespace Agent
