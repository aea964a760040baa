// The section `.kex.type` of a plug-in without descriptors: what it knows, model files bring.
#include "host/kex/base/Export.h"
#include "registration/PmbusTypes.h"

#if defined(__clang__)
#define EMERSON_UNPADDED __attribute__((no_sanitize("address")))
#else
#define EMERSON_UNPADDED
#endif

#define EMERSON_SECTION_NAME(type) "Emerson::PmbusIdentifier::" #type "\0"

extern "C" {
extern KEX_API char kexTypeNames[];

__attribute__((section(".kex.type"), used, aligned(32)))
EMERSON_UNPADDED KEX_API char kexTypeNames[] = EMERSON_PMBUS_TYPES(EMERSON_SECTION_NAME);
}
