// An i2c adapter of this machine, through the kernel's i2c-dev interface.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "agent/transport/LinuxBus.h"
#include "host/smbus/Transport.h"

namespace Agent {

/// How transactions go through an adapter.
enum class LinuxWay : Kex::U8 {
  none,      ///< the adapter cannot carry them
  smbus,     ///< the kernel's SMBus block read and block process call
  plainI2c,  ///< a write and a read of the wanted length, in one transfer
};

/// The way that an adapter with these functions (`I2C_FUNC_*`) is used: the first that it can.
LinuxWay wayOf(unsigned long functions);
std::string_view nameOf(LinuxWay way);
/// Those of the functions that a way needs which are there, or else those that are not, for a
/// person: "SMBus block read, plain I2C". Empty when there are none.
std::string usefulFunctions(unsigned long functions, bool present);

/// Throws a `BusFailure` unless the kernel carried out all `messages` of a transfer: `done` is how
/// many it did, or a negative error number.
void checkCarriedOut(int done, unsigned messages);
/// The reply to `transaction` on adapter `number`, whose transfer gives the block that was read, as
/// long as it may be, or throws a `BusFailure`. What went wrong, a count byte that no block has
/// included, is told with the bus, the address and its meaning.
Smbus::Reply linuxReply(unsigned number, Smbus::Transaction const& transaction,
                        std::function<Smbus::Block()> const& transfer);

/// An adapter, open. The kernel does not let go of an adapter that a program holds open, so it is
/// opened anew for each transaction: one that was unplugged and has returned is found again.
class LinuxAdapter {
 public:
  /// Opens its device node and asks what the adapter can do. Throws a `BusFailure` that names the
  /// bus and the kernel's meaning.
  explicit LinuxAdapter(LinuxNode const& node);
  LinuxAdapter(LinuxAdapter const&) = delete;
  LinuxAdapter& operator=(LinuxAdapter const&) = delete;
  ~LinuxAdapter();

  /// Its `I2C_FUNC_*` bits.
  unsigned long functions() const { return functions_; }
  LinuxWay way() const { return wayOf(functions_); }
  /// Throws a `BusFailure` naming what the adapter lacks when there is no way to use it.
  void checkWay() const;
  /// Whether a kernel driver holds the address `device`. Nothing is sent. Throws a `Failure`.
  bool isHeld(Kex::U8 device) const;

  /// Carries out `transaction` and returns when the kernel does: on a worker's thread. Throws as
  /// `checkWay`.
  Smbus::Reply transfer(Smbus::Transaction const& transaction) const;

 private:
  Smbus::Block transferSmbus(Smbus::Transaction const& transaction) const;
  Smbus::Block transferPlainI2c(Smbus::Transaction const& transaction) const;
  /// The kernel's error number; 0 for none.
  int select(Kex::U8 device) const;

  unsigned number_;
  int file_;
  unsigned long functions_ = 0;
};

}  // namespace Agent
