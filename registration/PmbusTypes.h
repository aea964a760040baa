// The list of the PMBus module's types.
#pragma once

/// Calls X(type) for every type of the module, in the order of registration.
#define EMERSON_PMBUS_TYPES(X) X(Identifier) X(IdentifierFactory)
