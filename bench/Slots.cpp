// What a slot costs among many: one second of each, with one check in it, and its memory.
#include <memory>

#include "bench/SimulatedSlot.h"
#include "bench/Subject.h"
#include "bench/support/Heap.h"

namespace Bench {

namespace {

constexpr unsigned kNumbers[] = {100, 1000, 10000};

std::string nameOf(unsigned number) { return "slots " + std::to_string(number); }

/// Slots with a supply each, all recognised, out of step with one another.
class ManySlots {
 public:
  ManySlots(Agent::Plugin const& plugin, unsigned number) {
    slots_.reserve(number);
    for (unsigned i = 1; i <= number; ++i) {
      slots_.push_back(std::make_unique<Agent::Slot>(
          "PowerSupply" + std::to_string(i), std::make_unique<PromptBus>(&theSupply()), plugin));
      run(kInterval / number);
    }
    run(kInterval);
  }

 private:
  std::vector<std::unique_ptr<Agent::Slot>> slots_;
};

}  // namespace

std::vector<Subject> slotSubjects(Agent::Plugin const& plugin) {
  std::vector<Subject> subjects;
  for (unsigned const number : kNumbers) {
    auto const prepare = [&plugin, number] {
      return [slots = std::make_shared<ManySlots>(plugin, number)] { run(kInterval); };
    };
    subjects.push_back({.name = nameOf(number), .operations = number, .prepare = prepare});
  }
  return subjects;
}

std::vector<Count> slotCounts(Agent::Plugin const& plugin) {
  std::vector<Count> counts;
  for (unsigned const number : kNumbers) {
    Heap const before = heap();
    ManySlots const slots(plugin, number);
    auto const used = static_cast<double>(heap().liveBytes - before.liveBytes);
    counts.push_back({.name = nameOf(number) + " bytes", .value = used / number});
  }
  return counts;
}

}  // namespace Bench
