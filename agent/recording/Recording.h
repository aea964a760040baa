// The reader of recordings.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "agent/recording/TransactionLog.h"

namespace Agent {

/// A transaction of a recording, and where it stands in the file.
struct RecordedTransaction {
  TransactionRecord record;
  std::size_t line;
};

/// What `Recorder` wrote: the transactions of each slot, in their order.
class Recording {
 public:
  /// The first line of every recording.
  static std::string header();

  /// Reads `file`. Throws a `Failure` that names the file, and the line and the value that do not
  /// fit.
  explicit Recording(std::string const& file);

  /// The transactions of `slot`; an empty name is the one slot that there is. Throws a `Failure`
  /// when there is no such slot.
  std::vector<RecordedTransaction> const& transactions(std::string const& slot) const;
  /// Whether the file ends in the middle of a line, which is left out.
  bool isCut() const { return isCut_; }

 private:
  std::string file_;
  bool isCut_ = false;
  std::map<std::string, std::vector<RecordedTransaction>> slots_;
};

}  // namespace Agent
