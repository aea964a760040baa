// What slots cost that live side by side: a recognition, a check, and the memory of each.
#include <memory>

#include "bench/SimulatedSlot.h"
#include "bench/Subject.h"
#include "bench/support/Heap.h"

namespace Bench {

namespace {

constexpr unsigned kNumbers[] = {1, 10, 100, 1000, 10000};

/// Slots with a supply each, all recognised, out of step with one another. Neighbours' supplies
/// have other texts, as in the field, so that no two slots share theirs.
class ManySlots {
 public:
  ManySlots(Agent::Plugin const& plugin, unsigned number) {
    slots_.reserve(number);
    for (unsigned i = 1; i <= number; ++i) {
      slots_.push_back(std::make_unique<SimulatedSlot>(plugin, "PowerSupply" + std::to_string(i),
                                                       &supplies()[i % 2]));
      run(kInterval / number);
    }
    run(kInterval);
  }

  /// A recognition of each.
  void recognise() {
    for (auto const& slot : slots_) {
      slot->doRecognise();
    }
    run(kRecognition);
  }

 private:
  std::vector<std::unique_ptr<SimulatedSlot>> slots_;
};

std::string nameOf(char const* what, unsigned number) {
  return what + (" " + std::to_string(number));
}

}  // namespace

std::vector<Subject> slotSubjects(Agent::Plugin const& plugin) {
  std::vector<Subject> subjects;
  for (unsigned const number : kNumbers) {
    auto const slots = [&plugin, number] { return std::make_shared<ManySlots>(plugin, number); };
    subjects.push_back({.name = nameOf("check", number), .operations = number, .prepare = [slots] {
                          return [all = slots()] { run(kInterval); };
                        }});
    subjects.push_back({.name = nameOf("recognition", number),
                        .operations = number,
                        .prepare = [slots] { return [all = slots()] { all->recognise(); }; }});
  }
  return subjects;
}

std::vector<Count> slotCounts(Agent::Plugin const& plugin) {
  std::vector<Count> counts;
  for (unsigned const number : kNumbers) {
    Heap const before = heap();
    ManySlots const slots(plugin, number);
    auto const used = static_cast<double>(heap().liveBytes - before.liveBytes);
    counts.push_back({.name = nameOf("memory", number), .value = used / number});
  }
  return counts;
}

}  // namespace Bench
