// Bytes of unknown origin as text.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "host/kex/base/Types.h"

namespace Agent {

/// For a person: every byte outside 0x20 to 0x7E as `\xHH`. A line of it stays a line.
std::string escaped(std::string_view bytes);
/// As `escaped`, in double quotes.
std::string inQuotes(std::string_view bytes);
/// For JSON: every byte as the code point of its value (Latin-1), in UTF-8.
std::string latin1ToUtf8(std::string_view bytes);
/// Pairs of hexadecimal digits with `separator` between them.
std::string hex(std::span<Kex::U8 const> bytes, std::string_view separator = "");
/// For messages: control bytes as `\xHH`, all else, UTF-8 included, as it is.
std::string oneLine(std::string_view text);

}  // namespace Agent
