// A source that was opened.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "agent/recording/Beginning.h"
#include "host/smbus/Transport.h"

namespace Agent {

/// The way to a supply.
struct Opening {
  template <class Transport>
  Opening(std::unique_ptr<Transport> opened, std::optional<Beginning> const& begun = {})
      : transport(std::move(opened)), beginning(begun) {}

  std::unique_ptr<Smbus::Transport> transport;
  /// How a detection is to begin that is replayed; none where it is up to the slot.
  std::optional<Beginning> beginning;
};

}  // namespace Agent
