// Counts what the slots of a run do.
#pragma once

#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string>

#include "agent/report/Metrics.h"
#include "host/smbus/Transport.h"

namespace Agent {

/// Counts for each slot what its bus and its detections do. Times are those of the framework's
/// clock when something is told.
class Meter {
 public:
  /// The slots from now on, in the order of their names; figures of those that stay go on.
  void slotsAre(std::set<std::string> const& names);
  /// A transaction of `slot` ended.
  void transactionIs(std::string const& slot, Smbus::Reply const& reply);
  /// A detection of `slot` came to this.
  void supplyIs(std::string const& slot, Supply const& supply);
  /// Called when what is told of a slot changes.
  void onChangeIs(std::function<void()> onChange) { onChange_ = std::move(onChange); }

  /// The figures of now.
  Metrics metrics() const;

 private:
  struct Counted {
    SlotMetrics figures;
    /// The supply that was identified last.
    std::optional<Supply> identified{};
    /// When the supply answered first; none when that was not seen.
    std::optional<double> insertion{};
    /// Whether nothing has answered since the slot was empty, or since the start.
    bool isEmpty = true;
  };

  std::map<std::string, Counted> slots_;
  std::function<void()> onChange_;
};

}  // namespace Agent
