// What must hold of the rows of the table of models, for compile-time assertions.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "host/descriptors/Trim.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier::RowChecks {

/// The table, or rows that are tried in its stead.
using Rows = std::span<Model const>;

/// The rows are those of the list of types, in its order.
consteval bool inDeclaredOrder(Rows rows) {
  std::size_t index = 0;
  return std::ranges::all_of(
      rows, [&](Model const& row) { return static_cast<std::size_t>(row.id) == index++; });
}

/// Each row has a key, and each key a text that it accepts. A trimmed key never has outer blanks,
/// and a prefix is taken to have none by `overlap`.
consteval bool keysReachable(Rows rows) {
  return std::ranges::all_of(rows, [](Model const& row) {
    return !row.keys[0].empty() && std::ranges::all_of(row.keys, [&](std::string_view key) {
      return row.family->rule == MatchRule::exactLength || Descriptors::trimmed(key) == key;
    });
  });
}

/// Whether some text is accepted both by key `a` under rule `ruleA` and by key `b` under `ruleB`.
consteval bool overlap(MatchRule ruleA, std::string_view a, MatchRule ruleB, std::string_view b) {
  if (a.empty() || b.empty()) {
    return false;
  }
  if (ruleA == MatchRule::prefix || ruleB == MatchRule::prefix) {
    return (ruleA == MatchRule::prefix && b.starts_with(a)) ||
           (ruleB == MatchRule::prefix && a.starts_with(b));
  }
  return ruleA == ruleB ? a == b : Descriptors::trimmed(a) == Descriptors::trimmed(b);
}

/// No text is accepted by two keys of one field. At most `kModelCount` rows.
consteval bool keysUnique(Rows rows) {
  struct Entry {
    Family const* family;
    std::string_view key;
  };
  std::array<Entry, 2 * kModelCount> entries{};
  auto end = entries.begin();
  for (auto const& row : rows) {
    for (auto key : row.keys) {
      *end++ = {row.family, key};
    }
  }
  for (auto a = entries.begin(); a != end; ++a) {
    for (auto b = a + 1; b != end; ++b) {
      if (a->family->keyField == b->family->keyField &&
          overlap(a->family->rule, a->key, b->family->rule, b->key)) {
        return false;
      }
    }
  }
  return true;
}

/// A key has one of the lengths that its family's have.
consteval bool keysHaveTheirFamilysLength(Rows rows) {
  return std::ranges::all_of(rows, [](Model const& row) {
    auto const& lengths = row.family->keyLengths;
    return lengths[0] == 0 || std::ranges::all_of(row.keys, [&lengths](std::string_view key) {
             return key.empty() || std::ranges::find(lengths, key.size()) != lengths.end();
           });
  });
}

/// A row has the columns that its family's template asks for, and no other one.
consteval bool columnsAreThoseOfTheTemplates(Rows rows) {
  return std::ranges::all_of(rows, [](Model const& row) { return row.family->isComplete(row); });
}

/// The airflow is the one that the name says.
consteval bool reversedNamesBlowBackToFront(Rows rows) {
  return std::ranges::all_of(rows, [](Model const& row) {
    return kTypeNames[static_cast<std::size_t>(row.id)].ends_with("_Reversed") ==
           (row.airflow == Airflow::backToFront);
  });
}

}  // namespace Emerson::IpmiIdentifier::RowChecks
