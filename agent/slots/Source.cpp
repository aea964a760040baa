// A SOURCE of the command line: where a supply is, and how it is reached.
#include "agent/slots/Source.h"

#include <algorithm>
#include <set>

#include "agent/base/Error.h"
#include "agent/recording/ReplayTransport.h"
#include "agent/slots/FruImage.h"
#include "agent/transport/LinuxAdapter.h"
#include "agent/transport/LinuxTransport.h"
#include "agent/transport/SimulatedBus.h"

namespace Agent {

struct Source::Kind {
  /// What the text begins with; empty for a file.
  std::string_view prefix;
  bool isLive = false;
  /// See `Source::file`; null where there is none.
  std::string (*file)(std::string const& target);
  /// See `Source::exclusive`; throws a `UsageError` when `target` does not make sense.
  std::string (*exclusive)(std::string const& target);
  Opening (*open)(std::string const& target, SourceContext const& context);
};

namespace {

std::string exclusiveFile(std::string const& target) {
  if (target.empty()) {
    throw UsageError("a SOURCE must not be empty");
  }
  return target == "-" ? "standard input" : "";
}

std::string fileOf(std::string const& target) { return target == "-" ? "/dev/stdin" : target; }

Opening openFile(std::string const& target, SourceContext const& context) {
  std::vector<Kex::U8> const image = readFruImage(target);
  if (context.onImage) {
    context.onImage(image);
  }
  return std::make_unique<SimulatedBus>(SimulatedSupply(image, context.mfrId));
}

std::string exclusiveBus(std::string const& target) { return LinuxBus(target).identity(); }

Opening openBus(std::string const& target, SourceContext const& context) {
  LinuxBus const bus(target);
  if (!context.mayBeMissing) {
    LinuxAdapter(bus.node()).checkWay();
  }
  return std::make_unique<LinuxTransport>(bus, context.post);
}

std::string exclusiveRecording(std::string const& target) {
  if (target.empty()) {
    throw UsageError("replay: needs the name of a FILE");
  }
  return "";
}

std::string recordingOf(std::string const& target) { return ReplayTarget(target).file; }

Opening openRecording(std::string const& target, SourceContext const& context) {
  auto replay = std::make_unique<ReplayTransport>(ReplayTarget(target), context.onEnd);
  auto const beginning = replay->beginning();
  return {std::move(replay), beginning};
}

}  // namespace

// The first kind whose prefix fits is taken.
Source::Kind const Source::kKinds[] = {
    {.prefix = "i2c:",
     .isLive = true,
     .file = nullptr,
     .exclusive = &exclusiveBus,
     .open = &openBus},
    {.prefix = "replay:",
     .isLive = false,
     .file = &recordingOf,
     .exclusive = &exclusiveRecording,
     .open = &openRecording},
    {.prefix = "",
     .isLive = false,
     .file = &fileOf,
     .exclusive = &exclusiveFile,
     .open = &openFile},
};

Source::Kind const* Source::kindOf(std::string_view text) {
  return std::ranges::find_if(kKinds,
                              [text](Kind const& kind) { return text.starts_with(kind.prefix); });
}

Source::Source(std::string text)
    : text_(std::move(text)),
      kind_(kindOf(text_)),
      target_(text_.substr(kind_->prefix.size())),
      exclusive_(kind_->exclusive(target_)) {}

bool Source::isLive() const { return kind_->isLive; }

std::string Source::file() const { return kind_->file == nullptr ? "" : kind_->file(target_); }

Opening Source::open(SourceContext const& context) const { return kind_->open(target_, context); }

std::vector<Source> parseSources(std::vector<std::string> const& texts) {
  std::vector<Source> sources;
  std::set<std::string> taken;
  for (std::string const& text : texts) {
    Source const& source = sources.emplace_back(text);
    if (!source.exclusive().empty() && !taken.insert(source.exclusive()).second) {
      throw UsageError(source.exclusive() + " is named twice: " + text);
    }
  }
  return sources;
}

bool anyLive(std::vector<Source> const& sources) {
  return std::ranges::any_of(sources, &Source::isLive);
}

}  // namespace Agent
