// The folder that incidents are written to.
#pragma once

#include <string>
#include <string_view>

#include "agent/publish/Folder.h"
#include "agent/report/Supply.h"

namespace Agent {

/// Keeps recordings of incidents as `FOLDER/SLOT-TIME-VERDICT.jsonl`, a bounded number of them: the
/// oldest go first. What somebody else has put into the folder stays.
class IncidentFolder {
 public:
  static constexpr std::size_t kMostFiles = 100;
  /// Of all files together.
  static constexpr std::size_t kMostBytes = 20'000'000;

  /// How a time is written in names.
  enum class Times : unsigned char {
    ofDay,  ///< the date and the time of now, UTC: 20261124T030015Z
    ofRun,  ///< seconds of the framework's clock
  };

  /// Throws a `Failure` when `path` is no folder, or another program's.
  IncidentFolder(std::string const& path, Times times)
      : folder_(path), path_(path), times_(times) {}

  /// What an incident of `slot` is called that happens now, at `time` of the framework's clock.
  std::string fileOf(std::string const& slot, double time, Verdict verdict) const;
  /// Writes a file in place of the one before. Throws a `Failure`; the old file then stays.
  void write(std::string const& file, std::string_view text);

 private:
  /// Lets the oldest files go until there is room for `file` of so many bytes.
  void makeRoom(std::string const& file, std::size_t bytes);

  Folder folder_;
  std::string path_;
  Times times_;
};

}  // namespace Agent
