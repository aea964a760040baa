// A text of headings and lines of at most 80 columns, for a person.
#pragma once

#include <string>

#include "host/ipmi/AreaField.h"

namespace Agent {

/// The text as it grows.
class Page {
 public:
  void heading(std::string const& title);
  /// A line; what does not fit goes on below column `indent`. `>>`, and a colour where there are
  /// any, marks the fault.
  void line(std::string const& content, bool isFault = false, std::size_t indent = 0);
  /// A line about a part of a memory: "0xOFFSET  name  value".
  void row(std::size_t offset, char const* name, std::string const& value, bool isFault = false);
  /// The row of a field in the area that begins at `start`: its encoding, length and text.
  void field(std::size_t start, Ipmi::AreaField const& field, char const* name);

  std::string const& text() const { return text_; }

 private:
  std::string text_;
};

/// "0x12 stored, 0x34 computed" of `bytes`, the last of which makes their sum 0.
std::string checksums(std::span<Kex::U8 const> bytes);

}  // namespace Agent
