// A model file for a supply that nobody knows, as far as it can be written without a person.
#pragma once

#include <string>
#include <vector>

#include "host/ipmi/ProductInfoArea.h"

namespace Agent {

/// A model file with the keys of the supply that `fields` describe and the template of the family
/// in `paths` (files, and folders of them) whose keys are most like its own. What a person must
/// fill in is marked with `kToFillIn`, so the draft is no model file before that is done. Throws a
/// `Failure` where no file has a family, or the supply no key.
std::string draft(Ipmi::ProductInfoArea const& fields, std::vector<std::string> const& paths);

}  // namespace Agent
