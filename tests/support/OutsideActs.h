// What somebody else may do to an identifier, by its methods and by name.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "pmbus/Identifier.h"

namespace busTest {

/// The identifier that is acted on, and the way to its bus.
struct ActedOn {
  Kex::Ptr<Emerson::PmbusIdentifier::Identifier> identifier;
  Kex::Ptr<Hardware::Vorn> vorn;
};

/// Something that is done to an identifier, unless it refuses; afterwards it is set up as it was
/// before.
struct Act {
  std::string what;
  std::function<void(ActedOn const&)> happen;
};

std::vector<Act> outsideActs();

/// Something that may be taken from an identifier, and without which its detection stands still.
struct Switch {
  char const* what;
  std::function<void(ActedOn const&, bool on)> be;
};

std::vector<Switch> switches();

/// Writes attribute `id` by name; a request that is refused does nothing.
void writeByName(ActedOn const& on, Kex::AttributeId id, Kex::Ptr<Kex::GenericIf> const& value);

}  // namespace busTest
