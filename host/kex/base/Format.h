// printf-style formatting into a String8.
#pragma once

#include "host/kex/base/Export.h"
#include "host/kex/base/String8.h"

namespace Kex {

/// `pattern` filled as printf does. `%s` takes a NUL-terminated text.
[[gnu::format(printf, 1, 2)]] KEX_API String8 format(char const* pattern, ...);

}  // namespace Kex
