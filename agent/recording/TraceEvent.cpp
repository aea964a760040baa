// One line of the kernel's trace of i2c and smbus events.
#include "agent/recording/TraceEvent.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "agent/base/Error.h"
#include "agent/base/Text.h"

namespace Agent {

namespace {

using Kind = TraceEventKind;

struct Format {
  std::string_view name;
  Kind kind;
  /// The kernel's, with a capital for each field; see `Reader::isField`.
  std::string_view text;
};

constexpr Format kFormats[] = {
    {"i2c_write", Kind::i2cWrite, "i2c-N #M a=A f=F l=L [B]"},
    {"i2c_read", Kind::i2cRead, "i2c-N #M a=A f=F l=L"},
    {"i2c_reply", Kind::i2cReply, "i2c-N #M a=A f=F l=L [B]"},
    {"i2c_result", Kind::i2cResult, "i2c-N n=C ret=R"},
    {"smbus_write", Kind::smbusWrite, "i2c-N a=A f=F c=K P l=L [B]"},
    {"smbus_read", Kind::smbusRead, "i2c-N a=A f=F c=K P"},
    {"smbus_reply", Kind::smbusReply, "i2c-N a=A f=F c=K P l=L [B]"},
    {"smbus_result", Kind::smbusResult, "i2c-N a=A f=F c=K P D res=R"},
};

/// The kernel's.
constexpr int kLargestErrorNumber = 4095;

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }
constexpr bool isWord(char c) { return isDigit(c) || (c >= 'A' && c <= 'Z') || c == '_'; }

/// Reads a line from the left.
class Reader {
 public:
  explicit Reader(std::string_view rest) : rest_(rest) {}

  bool isAtEnd() const { return rest_.empty(); }
  void skipBlanks() { rest_.remove_prefix(run(isBlank).size()); }
  bool take(char c) {
    bool const isThere = rest_.starts_with(c);
    rest_.remove_prefix(isThere ? 1 : 0);
    return isThere;
  }
  /// What stands before the next blank; empty where a blank or the end comes first.
  std::string_view word() {
    return taken(run([](char c) { return !isBlank(c); }));
  }
  template <class Number>
  bool number(Number& value, int base = 10) {
    auto const [end, error] = std::from_chars(rest_.begin(), rest_.end(), value, base);
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.begin()));
    return error == std::errc();
  }
  /// Whether the rest is as `format` says, in which a blank stands for any number of them.
  bool isAs(std::string_view format, TraceEvent& event) {
    for (char const c : format) {
      bool const isCapital = c >= 'A' && c <= 'Z';
      if (c == ' ') {
        skipBlanks();
      } else if (isCapital ? !isField(c, event) : !take(c)) {
        return false;
      }
    }
    skipBlanks();
    return isAtEnd();
  }

 private:
  template <class Fits>
  std::string_view run(Fits fits) const {
    return {rest_.begin(), std::ranges::find_if_not(rest_, fits)};
  }
  std::string_view taken(std::string_view run) {
    rest_.remove_prefix(run.size());
    return run;
  }

  bool isField(char field, TraceEvent& event) {
    switch (field) {
      case 'N': return number(event.adapter);
      case 'M': return number(event.message);
      case 'A': return number(event.address, 16);
      case 'F': return number(event.flags, 16);
      case 'L': return number(event.length);
      case 'C': return number(event.messages);
      case 'R': return number(event.result) && event.result >= -kLargestErrorNumber;
      case 'K': return number(event.command, 16);
      case 'P': return !(event.protocol = taken(run(isWord))).empty();
      case 'D': return !word().empty();  // rd or wr
      case 'B': return areBytes(event.bytes);
      default: return false;
    }
  }

  bool areBytes(std::vector<Kex::U8>& bytes) {
    while (!rest_.empty() && !rest_.starts_with(']')) {
      if (Kex::U8 byte = 0; number(byte, 16)) {
        bytes.push_back(byte);
      } else {
        return false;
      }
      take('-');
    }
    return true;
  }

  std::string_view rest_;
};

/// What stands behind `TASK-PID [CPU] FLAGS TIME:`, in which flags may be missing. A task may be
/// called anything, so `line` begins behind a bracket that may be the one before CPU.
std::optional<std::string_view> eventBehind(std::string_view line, double& time) {
  Reader reader(line);
  unsigned cpu = 0;
  if (!reader.number(cpu) || !reader.take(']')) {
    return std::nullopt;
  }
  for (int words = 0; words < 2; ++words) {
    reader.skipBlanks();
    std::string_view const word = reader.word();
    auto const [end, error] = std::from_chars(word.begin(), word.end(), time);
    if (error == std::errc() && end + 1 == word.end() && *end == ':' &&
        word.find('.') != std::string_view::npos) {
      return line.substr(static_cast<std::size_t>(word.end() - line.begin()));
    }
  }
  return std::nullopt;
}

/// The format of the event that `text`, which is what follows the time, is named after.
Format const* formatOf(std::string_view text) {
  auto const* const format = std::ranges::find_if(kFormats, [text](Format const& row) {
    return text.starts_with(row.name) && text.substr(row.name.size()).starts_with(':');
  });
  return format == std::end(kFormats) ? nullptr : format;
}

bool isLost(std::string_view line) {
  return line.starts_with("CPU:") && (line.find("LOST") != std::string_view::npos ||
                                      line.find("DROPPED") != std::string_view::npos);
}

}  // namespace

std::optional<TraceEvent> traceEventIn(std::string_view line) {
  if (line.starts_with('#')) {
    return std::nullopt;
  }
  if (isLost(line)) {
    return TraceEvent{.kind = Kind::lost};
  }
  TraceEvent event;
  for (std::size_t at = line.find('['); at != std::string_view::npos; at = line.find('[', at + 1)) {
    auto text = eventBehind(line.substr(at + 1), event.time);
    if (!text) {
      continue;
    }
    text->remove_prefix(std::min(text->find_first_not_of(" \t"), text->size()));
    Format const* const format = formatOf(*text);
    if (format == nullptr) {
      return std::nullopt;
    }
    event.kind = format->kind;
    text->remove_prefix(format->name.size() + 1);
    if (Reader reader(*text); !reader.isAs(' ' + std::string(format->text), event)) {
      throw UsageError(std::string(format->name) + " is not followed by \"" +
                       std::string(format->text) + "\": " + inQuotes(text->substr(0, 100)));
    }
    return event;
  }
  // Written in another way, with another clock for one.
  for (Format const& format : kFormats) {
    if (line.find(' ' + std::string(format.name) + ": ") != std::string_view::npos) {
      throw UsageError(std::string(format.name) +
                       " does not stand behind TASK-PID [CPU] and a time in seconds: " +
                       inQuotes(line.substr(0, 100)));
    }
  }
  return std::nullopt;
}

}  // namespace Agent
