// The option --trace: trace messages of the program and its plug-in.
#include "agent/commands/TraceOption.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <string_view>

#include "agent/base/Error.h"
#include "agent/base/Terminal.h"
#include "agent/base/Text.h"
#include "host/kex/trace/Trace.h"

namespace Agent {

namespace {

constexpr unsigned kLevels = 32;

/// The bits of `LEVEL,LEVEL...`; none when that does not make sense.
std::optional<Kex::U32> levelsOf(std::string_view text) {
  Kex::U32 bits = 0;
  for (bool isLast = false; !isLast;) {
    std::size_t const comma = text.find(',');
    isLast = comma == std::string_view::npos;
    unsigned level = kLevels;
    std::string_view const number = text.substr(0, comma);
    auto const [end, error] = std::from_chars(number.begin(), number.end(), level);
    if (error != std::errc() || end != number.end() || level >= kLevels) {
      return std::nullopt;
    }
    bits |= Kex::U32{1} << level;
    text.remove_prefix(isLast ? 0 : comma + 1);
  }
  return bits;
}

}  // namespace

void turnTracesOn(std::vector<std::string> const& settings) {
  std::map<Kex::String8, Kex::U32> handles;
  auto const known = Kex::TraceHandle::names();
  for (std::string const& setting : settings) {
    std::size_t const equals = setting.find('=');
    std::optional<Kex::U32> const levels =
        equals == std::string::npos ? std::nullopt : levelsOf(setting.substr(equals + 1));
    if (!levels || equals == 0) {
      throw UsageError("--trace: " + inQuotes(setting) +
                       " is not HANDLE=LEVELS with levels from 0 to 31 joined by commas");
    }
    std::string const handle = setting.substr(0, equals);
    if (std::ranges::find(known, Kex::String8(handle)) == known.end()) {
      throw UsageError("--trace: there is no trace handle " + inQuotes(handle) + ", only " +
                       traceHandles());
    }
    handles[Kex::String8(handle)] |= *levels;
  }
  noProgress();
  for (auto const& [handle, levels] : handles) {
    Kex::TraceHandle::levelsIs(handle, levels);
    Kex::TraceHandle::facilityIs(handle, true);
  }
}

std::string traceHandles() {
  std::string names;
  for (Kex::String8 const& name : Kex::TraceHandle::names()) {
    names.append(names.empty() ? "" : ", ").append(name.view());
  }
  return names;
}

}  // namespace Agent
