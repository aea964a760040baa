// One slot: a bus, what is known of the slot, and the identifier that detects its supply.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "agent/report/Supply.h"
#include "agent/slots/Opening.h"
#include "agent/slots/Plugin.h"
#include "host/detector/SlotDriver.h"
#include "host/smbus/Bus.h"

namespace Agent {

/// A power-supply slot at work: from its construction on, detection runs whenever the loop does.
/// While it lives, the tree of entities has its driver at /NAME, and its configuration, status and
/// cell at /config/NAME, /status/NAME and /cell/NAME.
class Slot {
 public:
  /// Throws a `UsageError` when the root of the tree has a member called `name` already, and a
  /// `Kex::Exception` when the factory refuses.
  Slot(std::string const& name, Opening opening, Plugin const& plugin);
  Slot(Slot const&) = delete;
  Slot& operator=(Slot const&) = delete;
  /// Withdraws what is on the bus and takes the slot out of the tree.
  ~Slot();

  std::string const& name() const { return name_; }
  /// The outcome of the last detection; none before the first one has ended.
  Supply const* supply() const { return status_->supply(); }
  Kex::Ptr<PowerSupplyDetector::SlotDriver> const& driver() const { return driver_; }

  /// Called from the run loop at the end of each detection.
  void onSupplyIs(std::function<void(Supply const&)> onSupply);
  /// Sees each transaction of the slot's bus; null for nobody. Not owned.
  void observerIs(Smbus::TransactionObserver* observer) { bus_->observerIs(observer); }
  /// Seconds between two polls or checks. A replay keeps this and the other interval as they were
  /// recorded.
  void pollIntervalIs(double seconds);
  double pollInterval() const { return timings_.pollInterval; }
  /// See `IdentifierBase::reviewIntervalIs`.
  void reviewIntervalIs(double seconds);
  double reviewInterval() const { return timings_.reviewInterval; }
  /// How the detection began that is under way.
  Beginning beginning() const;
  /// Ends detection; what was found stays. It may be called from `onSupply`.
  void stop();
  /// Begins detection anew. What is published stays until it has ended.
  void detectAgain();

 private:
  class Watcher;

  template <class Operation>
  void forEachIdentifier(Operation operation) const;
  void begin(Beginning const& beginning);

  std::string name_;
  PowerSupplyDetector::Timings timings_;
  bool isReplay_ = false;
  Kex::Ptr<Smbus::Bus> bus_;
  Kex::Ptr<Hardware::PowerSupplySlot::SlotConfig> config_;
  Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus> status_;
  Kex::Ptr<Hardware::PowerSupply::CellConfig> cell_;
  Kex::Ptr<PowerSupplyDetector::SlotDriver> driver_;
  Kex::Ptr<Watcher> watcher_;
};

}  // namespace Agent
