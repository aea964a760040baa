// The page that shows recordings as a picture.
#pragma once

#include <string>
#include <vector>

#include "agent/page/Lane.h"

namespace Agent {

/// A document of HTML that is whole in itself and asks nothing of any network: the lanes as data,
/// and the script that draws them. Nothing in the lanes becomes markup or script. `hasFiles` says
/// whether the lanes are of several files.
std::string pageOf(std::vector<Lane> const& lanes, bool hasFiles);

}  // namespace Agent
