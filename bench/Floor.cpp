// What one whole recognition costs by hand, from the MFR_ID to the first check.
#include <benchmark/benchmark.h>

#include <memory>

#include "bench/ByHand.h"
#include "bench/SimulatedSlot.h"
#include "bench/Subject.h"

namespace Bench {

std::vector<Subject> floorSubjects() {
  auto const floor = [] {
    return [description = std::make_shared<ByHand::Description>(), turn = 0U]() mutable {
      benchmark::DoNotOptimize(ByHand::recognise(supplies()[++turn % 2], *description));
      benchmark::ClobberMemory();
    };
  };
  return {{.name = "floor", .prepare = floor}};
}

}  // namespace Bench
