// The reader of recordings.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "agent/recording/KernelTrace.h"

namespace Agent {

/// The transactions of each slot, in their order: what `Recorder` wrote, or what a `KernelTrace`
/// tells, in which each adapter is a slot.
class Recording {
 public:
  /// The first line of every recording.
  static std::string header();

  /// Reads `file`. Throws a `Failure` that names the file, and the line and the value that do not
  /// fit.
  explicit Recording(std::string const& file);

  std::string const& file() const { return file_; }
  /// All slots that are named in it.
  std::map<std::string, RecordedSlot> const& slots() const { return slots_; }
  /// The transactions of `slot`; an empty name is the one slot that there is. Throws a `Failure`
  /// when there is no such slot.
  std::vector<RecordedTransaction> const& transactions(std::string const& slot) const;
  /// Whether it is a trace: nobody knows which program asked, and how many bytes it wanted.
  bool isTrace() const { return isTrace_; }
  /// What a trace cannot tell of `slot`, for a person, each with the file and the line.
  std::vector<std::string> doubts(std::string const& slot) const;
  /// Whether the file ends in the middle of a line, which is left out.
  bool isCut() const { return isCut_; }

 private:
  void take(JsonValue::Json json, std::size_t line);
  RecordedSlot const& recordedSlot(std::string const& slot) const;

  std::string file_;
  bool isTrace_ = false;
  bool isCut_ = false;
  std::map<std::string, RecordedSlot> slots_;
};

}  // namespace Agent
