// Other texts in place of serial numbers.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "agent/base/SipHash.h"
#include "host/ipmi/ProductInfoArea.h"

namespace Agent {

/// Puts a pseudonym in place of a text: as long as the text, the same for the same text and key,
/// another one for every other text, and without a character that is the same at the same place.
/// Digits stay digits, letters letters of their case; blanks and punctuation stay. Texts that begin
/// alike have pseudonyms that begin alike: a part of a text is enough to make that of its
/// pseudonym.
class Pseudonyms {
 public:
  explicit Pseudonyms(HashKey const& key) : key_(key) {}
  /// Those of this machine, whose identity is the key; a fixed one where it has none.
  static Pseudonyms ofMachine();

  std::string of(std::string_view text) const;
  /// The same of a field's stored bytes.
  std::vector<Kex::U8> of(std::span<Kex::U8 const> stored, Ipmi::FieldEncoding encoding) const;

 private:
  /// What takes the place of `value`, one of the values from `first` to `last`, behind `prefix`.
  Kex::U8 other(std::string& prefix, Kex::U8 value, Kex::U8 first, Kex::U8 last) const;

  HashKey key_;
};

}  // namespace Agent
