// An i2c adapter that umockdev stands in for, with a simulated supply on it.
#pragma once

#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <umockdev.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "agent/transport/SimulatedSupply.h"

namespace linuxTest {

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};
template <class T>
using Owned = std::unique_ptr<T, Unref>;

inline constexpr unsigned long kSmbusBlocks =
    I2C_FUNC_SMBUS_READ_BLOCK_DATA | I2C_FUNC_SMBUS_BLOCK_PROC_CALL;

/// How an adapter behaves; the numbers are errno values, 0 for none.
struct Behaviour {
  unsigned long functions = kSmbusBlocks;
  int slaveError = 0;
  int transferError = 0;
  /// The count byte of replies, in place of the true one.
  std::optional<Kex::U8> count{};
  /// How many of two messages are carried out.
  int messages = 2;
  /// Keeps transfers until `release`.
  bool hangs = false;
};

/// `/dev/i2c-N` of a test bed.
class FakeAdapter {
 public:
  FakeAdapter(UMockdevTestbed* bed, unsigned number, Behaviour const& behaviour);
  FakeAdapter(FakeAdapter const&) = delete;
  FakeAdapter& operator=(FakeAdapter const&) = delete;
  ~FakeAdapter();

  /// What its driver calls it, "fake i2c-N" before.
  void nameIs(std::string const& name);
  void behaviourIs(Behaviour const& behaviour);
  /// The transfers so far: "smbus read 99", "smbus call 7 B00158", "58<B00158 58>17".
  std::vector<std::string> transfers();
  /// Waits until a transfer hangs.
  void awaitHang();
  /// Fails the transfer that hangs as one that timed out.
  void release();

 private:
  /// What umockdev's thread calls; it lives as long as a call, which may be longer than the
  /// adapter.
  class Line;

  UMockdevTestbed* bed_;
  std::string node_;
  std::shared_ptr<Line> line_;
  Owned<UMockdevIoctlBase> handler_;
};

}  // namespace linuxTest
