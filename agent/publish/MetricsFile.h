// The figures of a run as a file, for a monitoring system to read.
#pragma once

#include <string>

#include "agent/base/Ledger.h"
#include "agent/base/Trouble.h"
#include "agent/publish/Folder.h"
#include "agent/publish/PublishedFile.h"
#include "agent/publish/Publisher.h"
#include "agent/report/Meter.h"
#include "agent/transport/Timer.h"

namespace Agent {

/// Keeps a file of metrics, which is replaced whole when what is told of a slot changes, and from
/// time to time. It goes with this: figures of a run that is over are nobody's.
class MetricsFile {
 public:
  /// Longest time between two versions, in seconds.
  static constexpr double kInterval = 15;

  /// Writes the first version. `publisher` may be null; all that is given must outlive this. Throws
  /// a `Failure` when the folder of `path` cannot be opened; what cannot be written is told to
  /// `ledger` and tried again.
  MetricsFile(std::string const& path, Meter& meter, Publisher const* publisher, Ledger& ledger);
  MetricsFile(MetricsFile const&) = delete;
  MetricsFile& operator=(MetricsFile const&) = delete;
  ~MetricsFile();

 private:
  void write();

  Meter& meter_;
  Publisher const* publisher_;
  Folder folder_;
  Trouble trouble_;
  PublishedFile file_;
  Timer timer_;
};

}  // namespace Agent
