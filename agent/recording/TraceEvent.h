// One line of the kernel's trace of i2c and smbus events.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "host/kex/base/Types.h"

namespace Agent {

/// What a line tells of: the event of this name, or that events are missing.
enum class TraceEventKind : Kex::U8 {
  i2cWrite,     ///< a message that a transfer will write; those of a transfer come in their order
  i2cRead,      ///< a message that it will read
  i2cReply,     ///< what a message read; only of transfers that succeeded
  i2cResult,    ///< how many messages were carried out, or a negative error number
  smbusWrite,   ///< an SMBus call that writes
  smbusRead,    ///< one that only reads
  smbusReply,   ///< what it read; not of one that was called as a write
  smbusResult,  ///< how it ended: 0, or a negative error number
  lost,         ///< events were lost before the next line
};

/// The event, as far as it tells.
struct TraceEvent {
  TraceEventKind kind{};
  /// In seconds of the trace's clock.
  double time = 0;
  /// The number of the adapter.
  unsigned adapter = 0;
  /// Which message of the transfer it is, from 0 on.
  unsigned message = 0;
  unsigned address = 0;
  /// `I2C_M_*` of a message, `I2C_CLIENT_*` of a call.
  unsigned flags = 0;
  unsigned length = 0;
  unsigned messages = 0;
  unsigned command = 0;
  /// BLOCK_DATA, BLOCK_PROC_CALL, ...; it stands in the line.
  std::string_view protocol{};
  /// At most 64 of a long message's.
  std::vector<Kex::U8> bytes{};
  int result = 0;
};

/// The event of a line of `/sys/kernel/tracing/trace` or of `trace-cmd report`; none when the line
/// is of something else. Throws a `UsageError` when it is one of these events, but not as the
/// kernel writes it with a clock in seconds.
std::optional<TraceEvent> traceEventIn(std::string_view line);

}  // namespace Agent
