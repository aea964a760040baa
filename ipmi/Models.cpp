// The table of all supported models, and what must hold of it, asserted at compile time.
#include "ipmi/Models.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "host/descriptors/Trim.h"
#include "ipmi/families/All.h"

namespace Emerson::IpmiIdentifier {
namespace {

using Descriptors::trimmed;

template <std::size_t... kSizes>
consteval auto joined(Model const (&... parts)[kSizes]) {
  std::array<Model, (kSizes + ...)> all{};
  auto next = all.begin();
  ((next = std::copy(parts, parts + kSizes, next)), ...);
  return all;
}

}  // namespace

constexpr std::array<Model, kModelCount> kModels =
    joined(kDs3000Models, kDs2700Models, kDs2900Models, kEmerson760Models, kDs460Models,
           kDs500Models, kDs750Models, kDs1100Models, kDs1600Models);

namespace {

consteval bool inDeclaredOrder() {
  std::size_t index = 0;
  return std::ranges::all_of(
      kModels, [&](Model const& row) { return static_cast<std::size_t>(row.id) == index++; });
}

// A trimmed key never has outer blanks, and a prefix is taken to have none by `overlap`.
consteval bool keysReachable() {
  return std::ranges::all_of(kModels, [](Model const& row) {
    return !row.keys[0].empty() && std::ranges::all_of(row.keys, [&](std::string_view key) {
      return row.family->rule == MatchRule::exactLength || trimmed(key) == key;
    });
  });
}

// Whether some text is accepted both by key `a` under rule `ruleA` and by key `b` under `ruleB`.
consteval bool overlap(MatchRule ruleA, std::string_view a, MatchRule ruleB, std::string_view b) {
  if (a.empty() || b.empty()) {
    return false;
  }
  if (ruleA == MatchRule::prefix || ruleB == MatchRule::prefix) {
    return (ruleA == MatchRule::prefix && b.starts_with(a)) ||
           (ruleB == MatchRule::prefix && a.starts_with(b));
  }
  return ruleA == ruleB ? a == b : trimmed(a) == trimmed(b);
}
static_assert(overlap(MatchRule::prefix, "AB", MatchRule::exactLength, "ABC") &&
                  overlap(MatchRule::exactLength, "ABC", MatchRule::prefix, "AB") &&
                  !overlap(MatchRule::prefix, "ABC", MatchRule::exactLength, "AB"),
              "a prefix meets each key that begins with it, on either side");

consteval bool keysUnique() {
  struct Entry {
    Family const* family;
    std::string_view key;
  };
  std::array<Entry, 2 * kModels.size()> entries{};
  auto next = entries.begin();
  for (auto const& row : kModels) {
    for (auto key : row.keys) {
      *next++ = {row.family, key};
    }
  }
  for (auto a = entries.begin(); a != entries.end(); ++a) {
    for (auto b = a + 1; b != entries.end(); ++b) {
      if (a->family->keyField == b->family->keyField &&
          overlap(a->family->rule, a->key, b->family->rule, b->key)) {
        return false;
      }
    }
  }
  return true;
}

consteval bool keysHaveTheirFamilysLength() {
  return std::ranges::all_of(kModels, [](Model const& row) {
    auto const& lengths = row.family->keyLengths;
    return lengths[0] == 0 || std::ranges::all_of(row.keys, [&lengths](std::string_view key) {
             return key.empty() || std::ranges::find(lengths, key.size()) != lengths.end();
           });
  });
}

consteval bool columnsAreThoseOfTheTemplates() {
  return std::ranges::all_of(kModels, [](Model const& row) { return row.family->isComplete(row); });
}

consteval bool reversedNamesBlowBackToFront() {
  return std::ranges::all_of(kModels, [](Model const& row) {
    return kTypeNames[static_cast<std::size_t>(row.id)].ends_with("_Reversed") ==
           (row.airflow == Airflow::backToFront);
  });
}

static_assert(inDeclaredOrder(), "the rows stand in the order of the list of types");
static_assert(keysReachable(), "each row has a key, and each key a text that it accepts");
static_assert(keysUnique(), "no text is accepted by two keys of one field");
static_assert(keysHaveTheirFamilysLength(), "a key has one of the lengths that its family's have");
static_assert(columnsAreThoseOfTheTemplates(),
              "a row has the columns that its family's template asks for, and no other one");
static_assert(reversedNamesBlowBackToFront(), "the airflow is the one that the name says");

}  // namespace

}  // namespace Emerson::IpmiIdentifier
