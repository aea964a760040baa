// A text of headings and lines of at most 80 columns, for a person.
#include "agent/report/Page.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "agent/base/Terminal.h"
#include "agent/base/Text.h"
#include "host/ipmi/Record.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kValueColumn = 28;

/// Cuts `text` into pieces of at most `width` columns, after a blank where there is one; an escape
/// stays in one piece.
std::vector<std::string> pieces(std::string_view text, std::size_t width) {
  std::vector<std::string> cut(1);
  while (!text.empty()) {
    std::string_view const unit = text.substr(0, text.starts_with("\\x") ? 4 : 1);
    if (cut.back().size() + unit.size() > width) {
      std::size_t const blank = cut.back().rfind(' ');
      std::size_t const end = blank == std::string::npos ? cut.back().size() : blank + 1;
      std::string const word = cut.back().substr(end);
      cut.back().resize(end);
      cut.push_back(word);
    }
    cut.back() += unit;
    text.remove_prefix(unit.size());
  }
  return cut;
}

}  // namespace

void Page::heading(std::string const& title) {
  text_ += '\n' + inLook(Look::heading, title) + '\n';
}

void Page::line(std::string const& content, bool isFault, std::size_t indent) {
  std::string gutter = isFault ? ">> " : "   ";
  std::string_view rest = content;
  std::string start(rest.substr(0, std::min(indent, rest.size())));
  rest.remove_prefix(start.size());
  for (std::string const& piece : pieces(rest, kColumns - gutter.size() - indent)) {
    std::string whole = gutter;
    whole.append(start).append(piece);
    text_.append(isFault ? inLook(Look::bad, whole) : whole) += '\n';
    gutter = "   ";
    start.assign(indent, ' ');
  }
}

void Page::row(std::size_t offset, char const* name, std::string const& value, bool isFault) {
  line(Kex::format("0x%02zX  %-22s", offset, name).charPtr() + value, isFault, kValueColumn);
}

void Page::field(std::size_t start, Ipmi::AreaField const& field, char const* name) {
  if (field.offset == 0) {
    line(Kex::format("      %-22snot there", name).charPtr());
  } else {
    row(start + field.offset, name,
        Kex::format("%-8s %2u bytes  ", encodingName(field.encoding), field.length).charPtr() +
            inQuotes(field.text.view()));
  }
}

std::string checksums(std::span<Kex::U8 const> bytes) {
  return Kex::format("0x%02X stored, 0x%02X computed", bytes.back(),
                     Ipmi::checksumOf(bytes.first(bytes.size() - 1)))
      .charPtr();
}

}  // namespace Agent
