// The one list of descriptor types; classes, factories, rows and type records are all made from it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// Calls X(type, stem) for every descriptor type in its declared order, which is also the order of
/// registration. `type` is the short name of the type; `stem##Factory`, with the type's first
/// letter in lower case, is its factory function.
// clang-format off
#define EMERSON_DESCRIPTOR_TYPES(X) \
  X(DS3000, dS3000) \
  X(DS3000_Reversed, dS3000_Reversed) \
  X(DS3000TE, dS3000TE) \
  X(DS3000TE_Reversed, dS3000TE_Reversed) \
  X(DS3000DC, dS3000DC) \
  X(DS3000DC_Reversed, dS3000DC_Reversed) \
  X(DS2700, dS2700) \
  X(DS2700_Reversed, dS2700_Reversed) \
  X(DS2700DC, dS2700DC) \
  X(DS2700DC_Reversed, dS2700DC_Reversed) \
  X(DS2900, dS2900) \
  X(Emerson760, emerson760) \
  X(DS460TwoMicrocontroller, dS460TwoMicrocontroller) \
  X(DS460TwoMicrocontroller_Reversed, dS460TwoMicrocontroller_Reversed) \
  X(DS460ThreeMicrocontroller, dS460ThreeMicrocontroller) \
  X(DS460ThreeMicrocontroller_Reversed, dS460ThreeMicrocontroller_Reversed) \
  X(DS460DC, dS460DC) \
  X(DS460DC_Reversed, dS460DC_Reversed) \
  X(DS500, dS500) \
  X(DS500_Reversed, dS500_Reversed) \
  X(DS500DC, dS500DC) \
  X(DS500DC_Reversed, dS500DC_Reversed) \
  X(DS750, dS750) \
  X(DS750_Reversed, dS750_Reversed) \
  X(DS1100, dS1100) \
  X(DS1100_Reversed, dS1100_Reversed) \
  X(DS1100DC, dS1100DC) \
  X(DS1100DC_Reversed, dS1100DC_Reversed) \
  X(DS1600, dS1600) \
  X(DS1600_Reversed, dS1600_Reversed)
// clang-format on

namespace Emerson::IpmiIdentifier {

/// One enumerator a descriptor type; its value is the index of the type's row.
enum class ModelId : std::uint8_t {
#define EMERSON_MODEL_ID(type, stem) type,
  EMERSON_DESCRIPTOR_TYPES(EMERSON_MODEL_ID)
#undef EMERSON_MODEL_ID
};

/// The short names of the types, indexed by ModelId.
inline constexpr auto kTypeNames = std::to_array<std::string_view>({
#define EMERSON_TYPE_NAME(type, stem) #type,
    EMERSON_DESCRIPTOR_TYPES(EMERSON_TYPE_NAME)
#undef EMERSON_TYPE_NAME
});

inline constexpr std::size_t kModelCount = kTypeNames.size();

/// Whether `stem` is `type` with its first letter in lower case.
consteval bool isStemOf(std::string_view stem, std::string_view type) {
  return stem.size() == type.size() && stem.front() == type.front() + ('a' - 'A') &&
         stem.substr(1) == type.substr(1);
}

#define EMERSON_CHECK_STEM(type, stem)                                   \
  static_assert(isStemOf(#stem, #type), "the stem of " #type             \
                                        " is its name in lower case at " \
                                        "first");
EMERSON_DESCRIPTOR_TYPES(EMERSON_CHECK_STEM)
#undef EMERSON_CHECK_STEM

// NOLINTNEXTLINE(bugprone-macro-parentheses)
#define EMERSON_FORWARD_DECLARATION(type, stem) class type;
EMERSON_DESCRIPTOR_TYPES(EMERSON_FORWARD_DECLARATION)
#undef EMERSON_FORWARD_DECLARATION

}  // namespace Emerson::IpmiIdentifier
