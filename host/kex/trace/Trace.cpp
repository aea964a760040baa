// Tracing: named facilities whose levels are switched one by one.
#include "host/kex/trace/Trace.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace Kex {

std::ostream* coverageStream_ = nullptr;

namespace {

struct Facility {
  bool isOn = false;
  U32 levels = ~U32{0};
  U32 onLevels() const { return isOn ? levels : 0; }
};

/// Shared, so that a sink outlives its own replacement; null for the default.
std::shared_ptr<std::function<void(TraceRecord const&)>>& sink() {
  static auto& theSink = *new std::shared_ptr<std::function<void(TraceRecord const&)>>;
  return theSink;
}

std::string oneLine(std::string_view text) {
  std::string line;
  for (char const byte : text) {
    if (byte >= 0x20 && byte <= 0x7E) {
      line += byte;
    } else {
      std::array<char, 5> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "\\x%02X", static_cast<U8>(byte));
      line += escaped.data();
    }
  }
  return line;
}

void writeToStderr(TraceRecord const& record) {
  std::string const line = std::string(record.handle) + '/' + std::to_string(record.level) + ' ' +
                           oneLine(record.text.view()) + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void handOver(TraceRecord const& record) {
  if (record.isEnabled) {
    auto const chosen = sink();
    chosen != nullptr ? (*chosen)(record) : writeToStderr(record);
  }
  if (coverageStream_ != nullptr) {
    *coverageStream_ << record.source << ':' << record.line << ' ' << record.function << ' '
                     << record.level << ' ' << oneLine(record.text.view()) << '\n';
  }
}

/// Runs `work`; what it throws must not reach the code that is traced.
template <class Work>
void contained(Work work) noexcept {
  try {
    work();
  } catch (...) {  // NOLINT(bugprone-empty-catch)
  }
}

}  // namespace

struct TraceHandle::Registry {
  std::map<String8, Facility> facilities;
  std::vector<TraceHandle*> handles;
};

TraceHandle::Registry& TraceHandle::registry() {
  // Never destroyed: handles of plug-ins leave it at exit.
  static auto& theRegistry = *new Registry;
  return theRegistry;
}

TraceHandle::TraceHandle(char const* name, bool isOn)
    : name_(name),
      onLevels_(registry().facilities.try_emplace(name, isOn).first->second.onLevels()) {
  registry().handles.push_back(this);
}

TraceHandle::~TraceHandle() { std::erase(registry().handles, this); }

void TraceHandle::facilityIs(String8 const& name, bool isOn) {
  registry().facilities[name].isOn = isOn;
  refresh(name);
}

void TraceHandle::levelsIs(String8 const& name, U32 levels) {
  registry().facilities[name].levels = levels;
  refresh(name);
}

void TraceHandle::refresh(String8 const& name) {
  U32 const onLevels = registry().facilities[name].onLevels();
  for (TraceHandle* const handle : registry().handles) {
    if (name == handle->name_) {
      handle->onLevels_ = onLevels;
    }
  }
}

std::vector<String8> TraceHandle::names() {
  std::vector<String8> names;
  for (TraceHandle const* const handle : registry().handles) {
    names.emplace_back(handle->name_);
  }
  std::ranges::sort(names);
  auto const repeated = std::ranges::unique(names);
  names.erase(repeated.begin(), repeated.end());
  return names;
}

void traceSinkIs(std::function<void(TraceRecord const&)> chosen) {
  sink() = chosen ? std::make_shared<std::function<void(TraceRecord const&)>>(std::move(chosen))
                  : nullptr;
}

void traceHelper(TraceHandle const& facility, char const* context, std::ostringstream const& text,
                 unsigned level, bool isEnabled, char const* source, unsigned line,
                 char const* function) noexcept {
  static bool isHandingOver = false;
  if (std::exchange(isHandingOver, true)) {
    return;
  }
  contained([&] {
    handOver({.handle = facility.name(),
              .context = context,
              .text = String8(text.view()),
              .level = level,
              .isEnabled = isEnabled,
              .source = source,
              .line = line,
              .function = function});
  });
  isHandingOver = false;
}

void traceStatement(TraceHandle const& facility, unsigned level, void const* text,
                    void (*write)(void const* text, std::ostream& out), unsigned line,
                    char const* function) noexcept {
  contained([&] {
    std::ostringstream out;
    out.precision(12);
    contained([&] { write(text, out); });
    traceHelper(facility, "<unknown>", out, level, facility.isOn(level), facility.name(), line,
                function);
  });
}

}  // namespace Kex
