// Tracing: named facilities whose levels are switched one by one.
#pragma once

#include <functional>
#include <iosfwd>
#include <type_traits>
#include <vector>

#include "host/kex/base/Export.h"
#include "host/kex/base/String8.h"

namespace Kex {

/// While set, every trace statement is reported to it, whether its level is on or not.
extern KEX_API std::ostream* coverageStream_;

/// A trace facility with levels 0 to 31. Handles of one name are one facility: they share what was
/// set for the name, also what was set before the handle existed.
class KEX_API TraceHandle {
 public:
  /// `name` is kept, not copied. `isOn` is the facility's switch unless the name has one already;
  /// its levels are all on then.
  TraceHandle(char const* name, bool isOn);
  TraceHandle(TraceHandle const&) = delete;
  TraceHandle& operator=(TraceHandle const&) = delete;
  ~TraceHandle();

  char const* name() const { return name_; }
  /// Whether the facility and its `level` are on; a level of 32 or more never is.
  bool isOn(unsigned level) const { return level < 32 && ((onLevels_ >> level) & 1U) != 0; }

  /// Switches the facility of this name on or off; its levels are kept.
  static void facilityIs(String8 const& name, bool isOn);
  /// Sets the facility's levels to exactly those whose bits are set in `levels`.
  static void levelsIs(String8 const& name, U32 levels);
  /// Names of the facilities that have a handle at present, sorted.
  static std::vector<String8> names();

 private:
  struct Registry;
  static Registry& registry();
  static void refresh(String8 const& name);

  char const* name_;
  /// The levels, or none while the facility is off: a statement tests one word.
  U32 onLevels_;
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
  char const* function;
};

/// Where messages go that are enabled; the default writes "HANDLE/LEVEL text" lines to stderr,
/// bytes outside 0x20 to 0x7E as `\xHH`. An empty function restores the default. What a sink
/// throws reaches nobody, and it is told nothing of statements that it runs itself.
KEX_API void traceSinkIs(std::function<void(TraceRecord const&)> sink);

/// Hands one message over: to the sink when `isEnabled`, to the coverage stream when it is set.
KEX_API void traceHelper(TraceHandle const& facility, char const* context,
                         std::ostringstream const& text, unsigned level, bool isEnabled,
                         char const* source, unsigned line, char const* function) noexcept;

/// Writes the text of a statement: calls `write` with `text`, then hands the message over.
KEX_API void traceStatement(TraceHandle const& facility, unsigned level, void const* text,
                            void (*write)(void const* text, std::ostream& out), unsigned line,
                            char const* function) noexcept;

/// A trace statement. `text` is called with a stream of precision 12 to write the message, only
/// when the facility and the level are on or a coverage stream is set; an exception that it throws
/// ends the message there.
template <class Text>
inline void trace(TraceHandle const& facility, unsigned level, Text const& text,
                  unsigned line = __builtin_LINE(), char const* function = __builtin_FUNCTION()) {
  if (facility.isOn(level) || coverageStream_ != nullptr) [[unlikely]] {
    traceStatement(
        facility, level, &text,
        [](void const* writer, std::ostream& out) { (*static_cast<Text const*>(writer))(out); },
        line, function);
  }
}

}  // namespace Kex
