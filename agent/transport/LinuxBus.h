// Which i2c adapters this machine has, and which of them a text means.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/transport/BusFailure.h"

namespace Agent {

/// An i2c adapter of this machine, as the kernel lists it.
struct LinuxAdapterEntry {
  unsigned number;
  /// What its driver calls it.
  std::string name;
  /// Its folder in sysfs.
  std::string path;
};

/// All adapters, by number.
std::vector<LinuxAdapterEntry> linuxAdapters();
/// The adapter of this number; none where the kernel lists none.
std::optional<LinuxAdapterEntry> linuxAdapter(unsigned number);
/// For a person: which adapters there are, and how their device nodes come to be.
std::string linuxAdaptersText();
/// `i2c-N`.
std::string linuxBusName(unsigned number);

/// The device node of an adapter.
struct LinuxNode {
  unsigned number;
  std::string path;
};

/// A bus as it was written behind `i2c:`. Which adapter that is is looked up whenever it is asked
/// for, since numbers change when adapters come and go.
class LinuxBus {
 public:
  /// `N`, the path of a device node, of a link to one or of a folder in sysfs that is an adapter's
  /// or has one adapter in it, or `name=TEXT`. Throws a `UsageError` for anything else.
  explicit LinuxBus(std::string const& target);

  /// The adapter's node. Throws a `BusFailure` when there is no such adapter, or several.
  LinuxNode node() const;
  /// For a person: `i2c-N` where the bus was written as a number, else as it was written.
  std::string const& name() const { return name_; }
  /// The same text for the same adapter, as far as that can be told now.
  std::string identity() const;

 private:
  enum class Kind : unsigned char { number, path, name };

  LinuxNode nodeAtPath() const;
  LinuxNode nodeOfName() const;
  /// There is no one adapter that is meant.
  BusFailure gone(std::string const& why) const;

  Kind kind_ = Kind::number;
  unsigned number_ = 0;
  /// A path, or an adapter's name.
  std::string text_;
  std::string name_;
};

}  // namespace Agent
