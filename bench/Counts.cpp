// Figures of a slot's life that are counted: allocations and transactions.
#include "bench/SimulatedSlot.h"
#include "bench/Subject.h"
#include "bench/support/Heap.h"

namespace Bench {

namespace {

constexpr unsigned kRuns = 100;

/// What happened on average of many.
struct Average {
  double allocations = 0;
  double transactions = 0;
};

class TransactionCount final : public Smbus::TransactionObserver {
 public:
  double value() const { return value_; }

 private:
  void handleTransaction(Smbus::Client const&, Smbus::Transaction const&,
                         Smbus::Reply const&) override {
    ++value_;
  }

  double value_ = 0;
};

template <class Operation>
Average averageOf(SimulatedSlot& slot, Operation operation) {
  operation();
  TransactionCount transactions;
  slot.slot().observerIs(&transactions);
  Heap const before = heap();
  for (unsigned i = 0; i < kRuns; ++i) {
    operation();
  }
  auto const allocations = static_cast<double>(heap().allocations - before.allocations);
  slot.slot().observerIs(nullptr);
  return {.allocations = allocations / kRuns, .transactions = transactions.value() / kRuns};
}

}  // namespace

std::vector<Count> lifeCounts(Agent::Plugin const& plugin) {
  auto const wait = [] { run(kInterval); };
  SimulatedSlot empty(plugin, "PowerSupply1", nullptr);
  Average const poll = averageOf(empty, wait);
  empty.slot().stop();
  SimulatedSlot slot(plugin, "PowerSupply2", supplies().data());
  // A review is a recognition.
  slot.slot().reviewIntervalIs(1e9);
  run(kRecognition);
  Average const check = averageOf(slot, wait);
  Average const recognition = averageOf(slot, [&slot] {
    slot.doRecognise();
    run(kRecognition);
  });
  return {{.name = "poll allocations", .value = poll.allocations},
          {.name = "check allocations", .value = check.allocations},
          {.name = "recognition allocations", .value = recognition.allocations},
          {.name = "recognition transactions", .value = recognition.transactions}};
}

}  // namespace Bench
