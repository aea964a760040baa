// A SOURCE of the command line: where a supply is, and how it is reached.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "agent/slots/Opening.h"
#include "agent/transport/OnEnd.h"
#include "agent/transport/Post.h"

namespace Agent {

/// What the opening of a source may need.
struct SourceContext {
  /// What a supply that is simulated from a file answers as its MFR_ID, 1 to 32 bytes.
  std::string mfrId = "EMERSON";
  /// For transports whose work is done on other threads.
  Post post;
  /// Told of the end of a source that has one; may be empty.
  OnEnd onEnd{};
  /// Whether a bus that cannot serve is opened all the same, since it may come yet.
  bool mayBeMissing = false;
  /// Told of the FRU memory that a supply is simulated from; may be empty.
  std::function<void(std::span<Kex::U8 const>)> onImage{};
};

/// A SOURCE as it was written. Kinds of sources are rows of one table in Source.cpp.
class Source {
 public:
  /// Throws a `UsageError` for a text that is no source. Nothing is opened.
  explicit Source(std::string text);

  std::string const& text() const { return text_; }
  /// Whether the source answers in its own time, so that the steady clock is needed.
  bool isLive() const;
  /// The file that the source is read from; empty for a bus.
  std::string file() const;
  /// What carries only one supply or can be read only once, such as a bus; empty for the rest.
  std::string const& exclusive() const { return exclusive_; }
  /// The way to the supply. Throws a `Failure` when it cannot be opened.
  Opening open(SourceContext const& context) const;

 private:
  struct Kind;
  static Kind const kKinds[];
  static Kind const* kindOf(std::string_view text);

  std::string text_;
  Kind const* kind_;
  /// The text without the prefix that tells the kind.
  std::string target_;
  std::string exclusive_;
};

/// The sources of a command line. Throws a `UsageError` when one of them is none, or when a bus or
/// standard input is named twice.
std::vector<Source> parseSources(std::vector<std::string> const& texts);
/// Whether any of `sources` needs the steady clock.
bool anyLive(std::vector<Source> const& sources);

}  // namespace Agent
