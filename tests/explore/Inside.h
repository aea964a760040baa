// What decides a slot's future and is nobody's business but the explorer's.
#pragma once

#include "pmbus/Identifier.h"

namespace explore {

/// Hands out a private member: an explicit instantiation may name it.
template <class Tag, typename Tag::Member Value>
struct Inside {
  friend typename Tag::Member memberOf(Tag /*tag*/) { return Value; }
};

struct DetectionTag {
  using Member = PowerSupplyDetector::Detection PowerSupplyDetector::IdentifierBase::*;
  friend Member memberOf(DetectionTag tag);
};
struct NextTag {
  using Member = PowerSupplyDetector::Next PowerSupplyDetector::IdentifierBase::*;
  friend Member memberOf(NextTag tag);
};
struct EmptyChunksTag {
  using Member = Kex::U8 Emerson::PmbusIdentifier::Identifier::*;
  friend Member memberOf(EmptyChunksTag tag);
};
struct CurrentTag {
  using Member = Smbus::Client* Smbus::Bus::*;
  friend Member memberOf(CurrentTag tag);
};

template struct Inside<DetectionTag, &PowerSupplyDetector::IdentifierBase::detection_>;
template struct Inside<NextTag, &PowerSupplyDetector::IdentifierBase::next_>;
template struct Inside<EmptyChunksTag, &Emerson::PmbusIdentifier::Identifier::emptyChunks_>;
template struct Inside<CurrentTag, &Smbus::Bus::current_>;

inline auto const& detectionOf(PowerSupplyDetector::IdentifierBase const& identifier) {
  return identifier.*memberOf(DetectionTag());
}
inline auto nextOf(PowerSupplyDetector::IdentifierBase const& identifier) {
  return identifier.*memberOf(NextTag());
}
/// Chunks in a row that brought nothing.
inline Kex::U8 emptyChunksOf(Emerson::PmbusIdentifier::Identifier const& identifier) {
  return identifier.*memberOf(EmptyChunksTag());
}
/// Whether somebody waits for the answer to what is on the wire.
inline bool hasClient(Smbus::Bus const& bus) { return bus.*memberOf(CurrentTag()) != nullptr; }

}  // namespace explore
