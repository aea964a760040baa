// The reader of recordings.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/recording/KernelTrace.h"
#include "agent/recording/Pseudonym.h"

namespace Agent {

/// The transactions of each slot, in their order: what `Recorder` wrote, or what a `KernelTrace`
/// tells, in which each adapter is a slot.
class Recording {
 public:
  /// The first line of every recording.
  static std::string header();

  /// The event that tells how a detection began.
  static constexpr std::string_view kStart = "start";

  /// Reads `file`. Throws a `Failure` that names the file, and the line and the value that do not
  /// fit.
  explicit Recording(std::string const& file);

  /// The same with `pseudonyms` in place of serial numbers. Throws a `Failure` for a trace, and for
  /// a value that does not fit.
  Recording redacted(Pseudonyms const& pseudonyms) const;

  std::string const& file() const { return file_; }
  /// All slots that are named in it.
  std::map<std::string, RecordedSlot> const& slots() const { return slots_; }
  /// The transactions of `slot`; an empty name is the one slot that there is. Throws a `Failure`
  /// when there is no such slot.
  std::vector<RecordedTransaction> const& transactions(std::string const& slot) const;
  /// How the detection of `slot` began; none where that is not told. Throws as well.
  std::optional<Beginning> const& beginning(std::string const& slot) const;
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
