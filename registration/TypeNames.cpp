// The section `.kex.type`: the full names of all types of this library, for the host's loader.
#include "host/kex/base/Export.h"
#include "ipmi/model/DescriptorTypes.h"
#include "registration/PmbusTypes.h"

// Instrumentation may put padding behind a variable, which in this section would be read as names.
#if defined(__clang__)
#define EMERSON_UNPADDED __attribute__((no_sanitize("address")))
#else
#define EMERSON_UNPADDED
#endif

#define EMERSON_SECTION_NAME(type, stem) "Emerson::IpmiIdentifier::" #type "\0"
#define EMERSON_PMBUS_SECTION_NAME(type) "Emerson::PmbusIdentifier::" #type "\0"

extern "C" {

/// NUL-terminated names in registration order. Visible and marked as used, since nothing in the
/// library refers to it: otherwise the linker would be free to drop it. Writable, as the loader
/// expects it.
extern KEX_API char kexTypeNames[];

__attribute__((section(".kex.type"), used, aligned(32)))
EMERSON_UNPADDED KEX_API char kexTypeNames[] =
    EMERSON_DESCRIPTOR_TYPES(EMERSON_SECTION_NAME) EMERSON_PMBUS_TYPES(EMERSON_PMBUS_SECTION_NAME);
}
