// What every FDL has.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Agent {

/// The start of the assignment to the attribute of this name: `fru.capacity`, blanks, `=`. Whether
/// `line` begins with it.
bool assigns(std::string_view line, std::string_view attribute);

/// What `fdl` lacks of what every FDL has, for a person: the first line, `fru.api`, `fru.modelName`
/// and `fru.capacity` once each, one fan. None for a whole one.
std::optional<std::string> fdlFault(std::string_view fdl);

/// The assignments that every FDL has.
inline constexpr std::string_view kAssigned[] = {"fru.api", "fru.modelName", "fru.capacity"};

}  // namespace Agent
