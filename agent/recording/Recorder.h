// The writer of recordings.
#pragma once

#include <fstream>
#include <string>

#include "agent/recording/TransactionLog.h"

namespace Agent {

/// Writes a recording: a header line, then each transaction as one JSON object a line, which is a
/// transcript's object and `"failure"`, why the transaction failed (null when it did not). Every
/// line is on its way to the file before the next transaction starts.
class Recorder {
 public:
  /// Begins `file` anew, so make it once the sources are open. Throws a `Failure` when it cannot be
  /// written.
  explicit Recorder(std::string file);

  /// Appends a transaction of `slot`. Throws a `Failure` the first time that it cannot be written;
  /// from then on nothing is.
  void recordIs(std::string const& slot, TransactionRecord const& record);

 private:
  void write(std::string const& line);

  std::string file_;
  std::ofstream out_;
};

}  // namespace Agent
