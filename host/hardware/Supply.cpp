// What a slot knows of its supply, as identification found it.
#include "host/hardware/Supply.h"

namespace Hardware::PowerSupplySlot {

char const* verdictName(Verdict verdict) {
  switch (verdict) {
    case Verdict::absent: return "absent";
    case Verdict::unsupportedManufacturer: return "unsupportedManufacturer";
    case Verdict::invalidHeader: return "invalidHeader";
    case Verdict::unreadable: return "unreadable";
    case Verdict::unsupportedVersion: return "unsupportedVersion";
    case Verdict::invalidChecksum: return "invalidChecksum";
    case Verdict::unrecognised: return "unrecognised";
    case Verdict::identified: return "identified";
  }
  return "unknown";
}

}  // namespace Hardware::PowerSupplySlot
