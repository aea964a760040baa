// The reader of what the kernel's i2c and smbus trace events tell, as text.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "agent/recording/RecordedSlot.h"

namespace Agent {

/// Reads `trace` of the kernel's tracing folder, or what `trace-cmd report` makes of a recording,
/// line by line: of the events `i2c_*` and `smbus_*` those of the device 0x58. What an adapter does
/// in plain I2C for an SMBus call is told as well, and belongs to the call.
class KernelTrace {
 public:
  KernelTrace();
  KernelTrace(KernelTrace const&) = delete;
  KernelTrace& operator=(KernelTrace const&) = delete;
  ~KernelTrace();

  /// The next line, of this number in the file; one of another event is passed over. Throws a
  /// `UsageError` when it is of these events and cannot be read.
  void lineIs(std::string_view line, std::size_t number);
  /// Ends the trace: what it tells of each adapter that has an answer of the device, by its name
  /// `i2c-N`. Times count from the first transfer to it. Throws a `UsageError` when there was no
  /// event at all.
  std::map<std::string, RecordedSlot> end();

 private:
  class Adapter;
  /// What happened a number of times.
  struct Doubt {
    std::size_t count = 0;
    std::size_t firstLine = 0;

    void lineIs(std::size_t line);
    /// Tells of it, if it happened: "LINE: what it is".
    void addTo(std::vector<std::string>& doubts, char const* what) const;
  };

  bool hasEvents_ = false;
  Doubt losses_;
  std::map<unsigned, std::unique_ptr<Adapter>> adapters_;
};

}  // namespace Agent
