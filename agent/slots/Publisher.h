// The FDL of each slot as a file, for others to read.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>

namespace Agent {

/// Keeps `FOLDER/SLOT.fdl` for each slot whose supply is identified. A reader sees a whole file or
/// none. Slot names are those of `isSlotName`.
class Publisher {
 public:
  /// Throws a `Failure` when `folder` is no folder.
  explicit Publisher(std::filesystem::path folder);
  Publisher(Publisher const&) = delete;
  Publisher& operator=(Publisher const&) = delete;
  /// Takes away all that is published.
  ~Publisher();

  /// Writes the slot's file in place of the one before. Throws a `Failure`; the old file then
  /// stays.
  void fdlIs(std::string const& slot, std::string_view fdl);
  /// Takes the slot's file away, if there is one. Throws a `Failure`.
  void fdlDel(std::string const& slot);

 private:
  std::filesystem::path file(std::string const& slot) const;

  std::filesystem::path folder_;
  std::set<std::string> published_;
};

/// Whether `name` can be a slot's: letters, digits, `.`, `_`, `-`, not beginning with a dot.
bool isSlotName(std::string_view name);

}  // namespace Agent
