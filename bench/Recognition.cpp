// What one whole recognition costs, from the MFR_ID to the first check.
#include <benchmark/benchmark.h>

#include <memory>

#include "bench/ByHand.h"
#include "bench/SimulatedSlot.h"
#include "bench/Subject.h"

namespace Bench {

std::vector<Subject> recognitionSubjects(Agent::Plugin const& plugin) {
  auto const recognition = [&plugin] {
    auto const slot = std::make_shared<SimulatedSlot>(plugin, "PowerSupply1", &theSupply());
    return [slot] { slot->recognise(); };
  };
  auto const floor = [] {
    return [description = std::make_shared<ByHand::Description>(), turn = 0U]() mutable {
      benchmark::DoNotOptimize(ByHand::recognise(supplyNumber(++turn), *description));
      benchmark::ClobberMemory();
    };
  };
  return {{.name = "recognition", .prepare = recognition}, {.name = "floor", .prepare = floor}};
}

}  // namespace Bench
