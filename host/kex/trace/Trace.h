// Tracing: named handles whose levels are switched one by one.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <source_location>

#include "host/kex/base/Export.h"
#include "host/kex/base/String8.h"

namespace Kex {

/// While set, every trace statement is reported to it, whether its level is on or not.
extern KEX_API std::ostream* coverageStream_;

/// A trace facility with levels 0 to 31. Handles of one name share what was set for the name, also
/// what was set before the handle existed.
class KEX_API TraceHandle {
 public:
  /// `name` is kept, not copied. `isOn` turns the facility on with all levels.
  TraceHandle(char const* name, bool isOn);
  TraceHandle(TraceHandle const&) = delete;
  TraceHandle& operator=(TraceHandle const&) = delete;
  ~TraceHandle();

  char const* name() const { return name_; }
  /// Whether the facility and its `level` are on.
  bool isOn(unsigned level) const { return ((levels_ >> level) & 1U) != 0; }

  /// Turns on exactly the levels whose bits are set in `levels`, for all handles of this name.
  static void levelsIs(String8 const& name, U32 levels);

 private:
  char const* name_;
  U32 levels_;
};

/// One trace message, as it is handed to the sink.
struct TraceRecord {
  char const* handle;
  char const* context;
  String8 text;
  unsigned level;
  bool isEnabled;  ///< false when only the coverage stream asked for it
  char const* source;
  unsigned line;
  String8 function;
};

/// Where messages go that are enabled; the default writes "HANDLE/LEVEL text" lines to stderr. An
/// empty function restores the default.
KEX_API void traceSinkIs(std::function<void(TraceRecord const&)> sink);

/// Hands one message over: to the sink when `isEnabled`, to the coverage stream when it is set.
KEX_API void traceHelper(TraceHandle const& facility, char const* context,
                         std::ostringstream const& text, unsigned level, bool isEnabled,
                         char const* source, unsigned line, char const* function);

/// Where a trace statement stands, and at what level.
struct TraceSite {
  TraceSite(TraceHandle const& facility, unsigned atLevel,
            std::source_location where = std::source_location::current())
      : handle(facility), level(atLevel), place(where) {}

  TraceHandle const& handle;
  unsigned level;
  std::source_location place;
};

/// A message while it is built: a stream of precision 12, handed over at the end.
class KEX_API TraceMessage {
 public:
  TraceMessage(TraceHandle const& handle, unsigned level, std::source_location place);
  TraceMessage(TraceMessage const&) = delete;
  TraceMessage& operator=(TraceMessage const&) = delete;
  ~TraceMessage();

  /// Where the text is written to.
  std::ostream& stream();

 private:
  TraceHandle const& handle_;
  unsigned level_;
  std::source_location place_;
  std::unique_ptr<std::ostringstream> stream_;
};

/// Streams `parts` into one message. When the level is off and no coverage stream is set, nothing
/// is formatted.
template <class... Parts>
inline void trace(TraceSite const& site, Parts const&... parts) {
  if (site.handle.isOn(site.level) || coverageStream_ != nullptr) [[unlikely]] {
    // Its parts, not the site: else every site would be written to memory to be handed over.
    TraceMessage message(site.handle, site.level, site.place);
    (message.stream() << ... << parts);
  }
}

}  // namespace Kex
