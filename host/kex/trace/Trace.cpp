// Tracing: named handles whose levels are switched one by one.
#include "host/kex/trace/Trace.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <ostream>
#include <sstream>
#include <string_view>
#include <vector>

namespace Kex {

std::ostream* coverageStream_ = nullptr;

namespace {

struct Registry {
  std::map<String8, U32> levels;
  std::vector<TraceHandle*> handles;
  std::function<void(TraceRecord const&)> sink;
};

Registry& registry() {
  // Never destroyed: handles of plug-ins leave it at exit.
  static auto& theRegistry = *new Registry;
  return theRegistry;
}

/// "doInitialize" of "virtual void Emerson::PmbusIdentifier::Identifier::doInitialize()".
std::string_view shortFunctionName(std::string_view signature) {
  std::size_t end = signature.find('(');
  // clang++ writes "(anonymous namespace)" where arguments do not begin.
  while (end != std::string_view::npos &&
         (end == 0 || signature[end - 1] == ' ' || signature[end - 1] == ':')) {
    end = signature.find('(', end + 1);
  }
  std::string_view const name = signature.substr(0, end);
  std::size_t const start = name.find_last_of(": *&");
  return start == std::string_view::npos ? name : name.substr(start + 1);
}

void writeToStderr(TraceRecord const& record) {
  std::fprintf(stderr, "%s/%u %s\n", record.handle, record.level, record.text.charPtr());
}

}  // namespace

TraceHandle::TraceHandle(char const* name, bool isOn)
    : name_(name),
      levels_(registry().levels.try_emplace(name, isOn ? ~U32{0} : U32{0}).first->second) {
  registry().handles.push_back(this);
}

TraceHandle::~TraceHandle() { std::erase(registry().handles, this); }

void TraceHandle::levelsIs(String8 const& name, U32 levels) {
  Registry& all = registry();
  all.levels[name] = levels;
  for (TraceHandle* const handle : all.handles) {
    if (name == handle->name_) {
      handle->levels_ = levels;
    }
  }
}

void traceSinkIs(std::function<void(TraceRecord const&)> sink) {
  registry().sink = std::move(sink);
}

void traceHelper(TraceHandle const& facility, char const* context, std::ostringstream const& text,
                 unsigned level, bool isEnabled, char const* source, unsigned line,
                 char const* function) {
  TraceRecord const record{.handle = facility.name(),
                           .context = context,
                           .text = String8(text.view()),
                           .level = level,
                           .isEnabled = isEnabled,
                           .source = source,
                           .line = line,
                           .function = String8(shortFunctionName(function))};
  if (isEnabled) {
    auto const& sink = registry().sink;
    sink ? sink(record) : writeToStderr(record);
  }
  if (coverageStream_ != nullptr) {
    *coverageStream_ << record.source << ':' << record.line << ' ' << record.function << ' '
                     << record.level << ' ' << record.text << '\n';
  }
}

TraceMessage::TraceMessage(TraceHandle const& handle, unsigned level, std::source_location place)
    : handle_(handle),
      level_(level),
      place_(place),
      stream_(std::make_unique<std::ostringstream>()) {
  stream_->precision(12);
}

TraceMessage::~TraceMessage() {
  traceHelper(handle_, "<unknown>", *stream_, level_, handle_.isOn(level_), handle_.name(),
              place_.line(), place_.function_name());
}

std::ostream& TraceMessage::stream() { return *stream_; }

}  // namespace Kex
