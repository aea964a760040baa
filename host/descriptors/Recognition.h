// How a descriptor recognises its supplies: the key field, the rule, the keys, what is traced.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "host/descriptors/Trim.h"
#include "host/ipmi/ProductInfoArea.h"

namespace Descriptors {

/// The field of the product info area that tells the model.
enum class KeyField : std::uint8_t { partNumber, productName };
inline constexpr std::array<std::string_view, 2> kKeyFieldNames = {"partNumber", "productName"};

/// How the key field is compared with an accepted key; always byte by byte.
enum class MatchRule : std::uint8_t {
  prefix,           ///< the field begins with the accepted key
  exactLength,      ///< the field as stored is the accepted key, blanks included
  trimmedEquality,  ///< the field without its outer blanks and tabs is the accepted key
};
inline constexpr std::array<std::string_view, 3> kMatchRuleNames = {"prefix", "exactLength",
                                                                    "trimmedEquality"};

/// What is traced of the key at level 1.
enum class KeyTrace : std::uint8_t { none, key, keyAndLength };
inline constexpr std::array<std::string_view, 3> kKeyTraceNames = {"none", "key", "keyAndLength"};

/// How one model's supplies are recognised. What it refers to outlives it.
struct Recognition {
  KeyField keyField;
  MatchRule rule;
  std::span<std::string_view const> keys;  ///< tried in this order; an empty one is none
  KeyTrace keyTrace = KeyTrace::none;
  std::string_view message;  ///< traced at level 0; empty: no trace

  /// The key of the supply that `fields` describe, as the rule compares it.
  std::string_view keyOf(Ipmi::ProductInfoArea const& fields) const {
    auto const& stored =
        keyField == KeyField::partNumber ? fields.partNumber() : fields.productName();
    return rule == MatchRule::trimmedEquality ? trimmed(stored.view()) : stored.view();
  }

  /// Whether `key`, as the rule compares it, is one of the model's.
  constexpr bool accepts(std::string_view key) const {
    return std::ranges::any_of(keys, [&](std::string_view accepted) {
      return !accepted.empty() &&
             (rule == MatchRule::prefix ? key.starts_with(accepted) : key == accepted);
    });
  }
};

}  // namespace Descriptors
