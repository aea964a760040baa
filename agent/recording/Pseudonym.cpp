// Other texts in place of serial numbers.
#include "agent/recording/Pseudonym.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <tuple>

namespace Agent {

namespace {

using Kex::U8;

/// Values that stand for each other. What fills a text (NULs, blanks, 0xFF) tells nothing and
/// stays.
struct Kind {
  U8 first;
  U8 last;
};

constexpr Kind kTextKinds[] = {{'0', '9'},   {'A', 'Z'},   {'a', 'z'},
                               {0x01, 0x08}, {0x0E, 0x1F}, {0x80, 0xFE}};
constexpr Kind kDigit = {0, 9};
constexpr Kind kByte = {0x00, 0xFF};

}  // namespace

Pseudonyms Pseudonyms::ofMachine() {
  HashKey key{};
  std::ifstream in("/etc/machine-id");
  std::string digits;
  in >> digits;
  for (std::size_t i = 0; i < key.size() && 2 * i + 2 <= digits.size(); ++i) {
    std::from_chars(digits.data() + 2 * i, digits.data() + 2 * i + 2, key[i], 16);
  }
  return Pseudonyms(key);
}

std::string Pseudonyms::of(std::string_view text) const {
  std::string pseudonym;
  std::string prefix;
  for (char const character : text) {
    auto const value = static_cast<U8>(character);
    auto const* const kind = std::ranges::find_if(kTextKinds, [value](Kind const& each) {
      return value >= each.first && value <= each.last;
    });
    bool const isReplaced = kind != std::ranges::end(kTextKinds);
    pseudonym +=
        isReplaced ? static_cast<char>(other(prefix, value, kind->first, kind->last)) : character;
    prefix += character;
  }
  return pseudonym;
}

std::vector<U8> Pseudonyms::of(std::span<U8 const> stored, Ipmi::FieldEncoding encoding) const {
  using Ipmi::FieldEncoding;
  std::vector<U8> pseudonym;
  std::string prefix;
  auto const digit = [&](unsigned nibble) {
    auto const value = static_cast<U8>(nibble);
    U8 const replaced =
        value <= kDigit.last ? other(prefix, value, kDigit.first, kDigit.last) : value;
    prefix += static_cast<char>(value);
    return replaced;
  };
  switch (encoding) {
    case FieldEncoding::binary:
    case FieldEncoding::eightBit: {
      std::string const text =
          of(std::string_view(reinterpret_cast<char const*>(stored.data()), stored.size()));
      return {text.begin(), text.end()};
    }
    case FieldEncoding::bcdPlus:
      for (U8 const byte : stored) {
        U8 const high = digit(byte >> 4U);
        pseudonym.push_back(static_cast<U8>(high << 4U | digit(byte & 0x0FU)));
      }
      break;
    case FieldEncoding::sixBitAscii:
      for (U8 const byte : stored) {
        pseudonym.push_back(other(prefix, byte, kByte.first, kByte.last));
        prefix += static_cast<char>(byte);
      }
      break;
  }
  return pseudonym;
}

U8 Pseudonyms::other(std::string& prefix, U8 value, U8 first, U8 last) const {
  // In a cycle whose order the key tells, each value is followed by the one that takes its place.
  auto const place = [&](unsigned candidate) {
    prefix += static_cast<char>(candidate);
    Kex::U64 const hash = sipHash(key_, prefix);
    prefix.pop_back();
    return std::tuple(hash, candidate);
  };
  auto const own = place(value);
  auto next = std::tuple<Kex::U64, unsigned>(~Kex::U64{0}, 0x100);
  auto lowest = own;
  for (unsigned candidate = first; candidate <= last; ++candidate) {
    auto const its = place(candidate);
    lowest = std::min(lowest, its);
    if (its > own) {
      next = std::min(next, its);
    }
  }
  return static_cast<U8>(std::get<1>(next) <= last ? std::get<1>(next) : std::get<1>(lowest));
}

}  // namespace Agent
