// The text of the page around its data, which the build makes of agent/page/web/.
#pragma once

#include <string_view>

namespace Agent {

extern std::string_view const kPageBefore;
extern std::string_view const kPageAfter;

}  // namespace Agent
