// Figures of a slot's life that are counted: allocations, transactions, time on the wire.
#include <cmath>
#include <memory>

#include "agent/transport/SimulatedBus.h"
#include "bench/SimulatedSlot.h"
#include "bench/Subject.h"
#include "bench/support/Heap.h"

namespace Bench {

namespace {

constexpr unsigned kRuns = 100;
constexpr double kManyIntervals = 100;
constexpr double kFruChunk = 16;

/// Allocations of `operation`, on average of many.
template <class Operation>
double allocations(Operation operation) {
  operation();
  Heap const before = heap();
  for (unsigned i = 0; i < kRuns; ++i) {
    operation();
  }
  return static_cast<double>(heap().allocations - before.allocations) / kRuns;
}

/// Sees what the transactions of a slot take.
class Watch final : public Smbus::TransactionObserver {
 public:
  double wireSeconds() const { return wireSeconds_; }
  double transactions() const { return transactions_; }
  /// Allocations from the end of one chunk to the end of the next, on average.
  double chunkAllocations() const { return chunkAllocations_ / chunks_; }

 private:
  void handleTransaction(Smbus::Client const& client, Smbus::Transaction const& transaction,
                         Smbus::Reply const&) override {
    ++transactions_;
    wireSeconds_ += Agent::wireTime(transaction, supply_.answer(transaction), true);
    if (client.name() != "identifySupply") {
      return;
    }
    auto const now = static_cast<double>(heap().allocations);
    // The first reads the area's header; what it makes is not a chunk's.
    if (++areaReads_ > 2) {
      ++chunks_;
      chunkAllocations_ += now - atLastRead_;
    }
    atLastRead_ = now;
  }

  Agent::SimulatedSupply const& supply_ = theSupply();
  double wireSeconds_ = 0;
  double transactions_ = 0;
  unsigned areaReads_ = 0;
  double chunks_ = 0;
  double chunkAllocations_ = 0;
  double atLastRead_ = 0;
};

/// Allocations from one transaction to the next while nothing happens to the slot.
double allocationsPerTransaction(SimulatedSlot& slot) {
  run(kInterval);
  Watch watch;
  slot.slot().observerIs(&watch);
  Heap const before = heap();
  run(kManyIntervals * kInterval);
  slot.slot().observerIs(nullptr);
  return static_cast<double>(heap().allocations - before.allocations) / watch.transactions();
}

/// The fewest transactions that could recognise the supply: its MFR_ID, all bytes of the common
/// header and the product info area in blocks of the largest size, and one check.
double leastTransactions() {
  Sample const sample("ds2900");
  auto const& image = sample.image();
  std::size_t const start = std::size_t{8} * image.at(4);
  auto const headerBytes = static_cast<double>(Ipmi::CommonAreaHeader::kLength);
  auto const areaBytes = 8.0 * image.at(start + 1);
  bool const isAdjacent = start == Ipmi::CommonAreaHeader::kLength;
  double const reads = isAdjacent
                           ? std::ceil((headerBytes + areaBytes) / kFruChunk)
                           : std::ceil(headerBytes / kFruChunk) + std::ceil(areaBytes / kFruChunk);
  return 1 + reads + 1;
}

}  // namespace

std::vector<Count> lifeCounts(Agent::Plugin const& plugin) {
  std::vector<Count> counts;
  auto const add = [&counts](char const* name, double value) {
    counts.push_back({.name = name, .value = value});
  };
  SimulatedSlot empty(plugin, "PowerSupply1", nullptr);
  add("poll allocations", allocationsPerTransaction(empty));
  empty.slot().stop();
  SimulatedSlot slot(plugin, "PowerSupply2", &theSupply());
  run(kRecognition);
  add("check allocations", allocationsPerTransaction(slot));
  add("recognition allocations", allocations([&slot] { slot.recognise(); }));
  add("record allocations", allocations([buffer = Sample("ds2900").area()] {
        Ipmi::ProductInfoArea::ProductInfoAreaIs(buffer);
      }));
  Watch watch;
  slot.slot().observerIs(&watch);
  slot.recognise();
  slot.slot().observerIs(nullptr);
  add("chunk allocations", watch.chunkAllocations());
  add("transactions", watch.transactions());
  add("least transactions", leastTransactions());
  add("wire seconds", watch.wireSeconds());
  return counts;
}

}  // namespace Bench
