// The writer of recordings.
#pragma once

#include <fstream>
#include <string>

#include "agent/recording/TransactionLog.h"

namespace Agent {

/// Writes a recording: a header line, then what happens as one JSON object a line. Every line is on
/// its way to the file before the next transaction starts.
class Recorder {
 public:
  /// Begins `file` anew, so make it once the sources are open; `-` is standard output, which then
  /// has nothing else. Throws a `Failure` when it cannot be written.
  explicit Recorder(std::string const& file);

  /// Appends a line, an object of one of the events that recordings have. Throws a `Failure` the
  /// first time that it cannot be written; from then on nothing is.
  void lineIs(std::string const& line);
  /// Appends a transaction of `slot`, as `lineIs` does.
  void recordIs(std::string const& slot, TransactionRecord const& record);
  /// Whether standard output is what it writes.
  bool isOut() const { return !file_.is_open(); }

 private:
  std::string name_;
  std::ofstream file_;
  std::ostream& out_;
};

}  // namespace Agent
