// Fills the placeholders of a template.
#pragma once

#include <span>
#include <string_view>

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"

namespace Descriptors {

/// A text field of the product info area, as its accessor.
using Field = Kex::String8 const& (Ipmi::ProductInfoArea::*)() const;

/// `pattern` with each placeholder, a percent sign and a letter, replaced by an argument: there are
/// as many of the ones as of the others.
Kex::String8 filled(std::string_view pattern, std::span<std::string_view const> arguments);

}  // namespace Descriptors
