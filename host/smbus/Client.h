// Whose transactions a bus carries out.
#pragma once

#include "host/smbus/Transport.h"

namespace Smbus {

/// What a bus serves. All calls come on the run loop's thread.
class KEX_API Client {
 public:
  /// What its transactions are for, as observers of the bus call it: a text that never goes away.
  virtual char const* name() const = 0;
  /// What to carry out; asked when its turn has come.
  virtual Transaction const& transaction() const = 0;
  /// The transaction is on its way to the wire.
  virtual void handleStarted() = 0;
  /// The transaction ended with `reply`. The client does not go away during the call.
  virtual void handleReply(Reply const& reply) = 0;

 protected:
  Client() = default;
  Client(Client const&) = default;
  Client& operator=(Client const&) = default;
  ~Client() = default;
};

}  // namespace Smbus
