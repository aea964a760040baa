// One slot: a bus, what is known of the slot, and the identifier that detects its supply.
#include "agent/slots/Slot.h"

#include <algorithm>
#include <utility>

#include "agent/base/Error.h"
#include "host/kex/entity/Directory.h"

namespace Agent {

namespace {

using Hardware::PowerSupplySlot::SlotConfig;
using Hardware::PowerSupplySlot::SlotStatus;

/// The directory of this name at the root.
Kex::Directory& directory(Kex::Name const& name) {
  auto found = Kex::dynamicCast<Kex::Directory>(Kex::root().member(name));
  if (!found) {
    found = Kex::make<Kex::Directory>(name);
    Kex::root().memberIs(found);
  }
  return *found;
}

}  // namespace

/// Tells of each outcome.
class Slot::Watcher final : public SlotStatus::NotifieeConst {
 public:
  explicit Watcher(Kex::Ptr<SlotStatus const> const& status) : NotifieeConst(status) {}
  void onSupplyIs(std::function<void(Supply const&)> onSupply) { onSupply_ = std::move(onSupply); }

 private:
  void onSupply() override {
    Supply const* const supply = notifier()->supply();
    if (onSupply_ && supply) {
      onSupply_(*supply);
    }
  }

  std::function<void(Supply const&)> onSupply_;
};

Slot::Slot(std::string const& name, Opening opening, Plugin const& plugin)
    : name_(name), bus_(Kex::make<Smbus::Bus>(std::move(opening.transport))) {
  Kex::Name const entityName{Kex::String8(name)};
  Kex::Directory& configs = directory("config");
  Kex::Directory& statuses = directory("status");
  Kex::Directory& cells = directory("cell");
  if (Kex::root().member(entityName)) {
    throw UsageError("a slot cannot be called " + name + ": the name is taken");
  }
  auto const vorn = Kex::make<Hardware::Vorn>(bus_);
  config_ = Kex::make<SlotConfig>(entityName, Kex::make<SmbusVorn::VornDesc>(vorn));
  status_ = Kex::make<SlotStatus>(entityName);
  cell_ = Kex::make<Hardware::PowerSupply::CellConfig>(entityName);
  driver_ = Kex::make<PowerSupplyDetector::SlotDriver>(entityName);
  watcher_ = Kex::make<Watcher>(status_);
  plugin.factory()->doAddIdentifierToDriver(driver_, config_, cell_, status_);
  Kex::root().memberIs(driver_);
  configs.memberIs(config_);
  statuses.memberIs(status_);
  cells.memberIs(cell_);
  if (opening.beginning) {
    begin(*opening.beginning);
  }
}

Slot::~Slot() {
  for (Kex::Ptr<Kex::Entity> const& entity :
       {Kex::Ptr<Kex::Entity>(driver_), Kex::Ptr<Kex::Entity>(config_),
        Kex::Ptr<Kex::Entity>(status_), Kex::Ptr<Kex::Entity>(cell_)}) {
    dynamic_cast<Kex::Directory&>(*entity->parent()).memberDel(entity->name());
  }
  watcher_->isRegisteredNotifieeIs(false);
  bus_->observerIs(nullptr);
  for (Kex::Name const& identifier : driver_->memberNames()) {
    driver_->identifierDel(identifier.str());
  }
}

void Slot::onSupplyIs(std::function<void(Supply const&)> onSupply) {
  watcher_->onSupplyIs(std::move(onSupply));
}

void Slot::begin(Beginning const& beginning) {
  pollIntervalIs(beginning.timings.pollInterval);
  reviewIntervalIs(beginning.timings.reviewInterval);
  forEachIdentifier([&](auto& identifier) { identifier.memoryIs(beginning.memory); });
  isReplay_ = true;
}

Beginning Slot::beginning() const {
  Beginning beginning;
  beginning.timings = timings_;
  forEachIdentifier([&](auto& identifier) { beginning.memory = identifier.memory(); });
  beginning.time = std::max(0.0, beginning.memory.lastReset);
  return beginning;
}

void Slot::pollIntervalIs(double seconds) {
  if (isReplay_) {
    return;
  }
  timings_.pollInterval = seconds;
  forEachIdentifier([seconds](auto& identifier) { identifier.pollIntervalIs(seconds); });
}

void Slot::reviewIntervalIs(double seconds) {
  if (isReplay_) {
    return;
  }
  timings_.reviewInterval = seconds;
  forEachIdentifier([seconds](auto& identifier) { identifier.reviewIntervalIs(seconds); });
}

void Slot::stop() {
  forEachIdentifier([](auto& identifier) { identifier.hasNotificationActiveIs(false); });
}

void Slot::detectAgain() {
  forEachIdentifier([](auto& identifier) { identifier.doResetIdentifier(); });
}

template <class Operation>
void Slot::forEachIdentifier(Operation operation) const {
  for (Kex::Name const& name : driver_->memberNames()) {
    operation(*driver_->identifier(name.str()));
  }
}

}  // namespace Agent
