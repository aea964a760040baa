// What it costs that a slot keeps what happened in it.
#include <memory>

#include "agent/recording/FlightRing.h"
#include "bench/SimulatedSlot.h"
#include "bench/Subject.h"
#include "bench/support/Heap.h"

namespace Bench {

namespace {

/// A slot with a supply whose transactions are kept.
class FollowedSlot final : Smbus::TransactionObserver {
 public:
  explicit FollowedSlot(Agent::Plugin const& plugin)
      : slot_(plugin, "PowerSupply1", supplies().data()) {
    slot_.slot().observerIs(this);
    run(kRecognition + kInterval);
  }
  FollowedSlot(FollowedSlot const&) = delete;
  FollowedSlot& operator=(FollowedSlot const&) = delete;
  ~FollowedSlot() { slot_.slot().observerIs(nullptr); }

 private:
  void handleTransaction(Smbus::Client const& client, Smbus::Transaction const& transaction,
                         Smbus::Reply const& reply) override {
    double const now = clock_->time();
    if (!ring_.isRepeated(client, transaction, reply, now)) {
      ring_.transactionIs(client, transaction, reply, now, nullptr);
    }
  }

  Kex::Ptr<Kex::Clock> clock_ = Kex::activityManager().config().clock();
  Agent::FlightRing ring_;
  SimulatedSlot slot_;
};

}  // namespace

std::vector<Subject> flightSubjects(Agent::Plugin const& plugin) {
  auto const prepare = [&plugin] {
    return [slot = std::make_shared<FollowedSlot>(plugin)] { run(kInterval); };
  };
  return {{.name = "check followed", .prepare = prepare}};
}

std::vector<Count> flightCounts(Agent::Plugin const& plugin) {
  FollowedSlot const slot(plugin);
  Heap const before = heap();
  run(kInterval);
  auto const allocations = static_cast<double>(heap().allocations - before.allocations);
  return {{.name = "check followed allocations", .value = allocations}};
}

}  // namespace Bench
