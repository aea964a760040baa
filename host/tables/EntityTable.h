// Constructor arguments that most entities have.
#pragma once

#include "host/tables/TypeTable.h"

namespace Kex {

/// Constructor arguments of an entity that is made from its name alone.
inline constexpr ConstructorArgument kNamedEntityArguments[] = {{"name", "Kex::Name"}};

}  // namespace Kex
