// soak: hot-swaps supplies in simulation; fails when memory or cost grows, or a swap is missed.
#include <charconv>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <iterator>
#include <vector>

#include "agent/slots/Plugin.h"
#include "bench/soak/SwappedSlot.h"
#include "bench/support/Heap.h"

namespace Bench {

namespace {

constexpr char kUsage[] = "usage: soak [CYCLES]   (default: 1000000, at least 80)\n";
constexpr Kex::U64 kDefaultCycles = 1'000'000;
constexpr Kex::U64 kFewestCycles = 10 * SwappedSlot::kRound;
/// Largest share by which the allocations of a cycle may differ between parts of the run: how many
/// checks fall into a cycle is not the same in every part.
constexpr double kFlat = 0.05;
/// How much the heap may round up what is in use at one time and not at another, in bytes.
constexpr Kex::U64 kRounding = 1024;

/// What holds at a point of the run.
struct Mark {
  Kex::U64 cycles = 0;
  Heap heap;
  Kex::U64 resident = 0;
  double cpuSeconds = 0;
};

Mark markAt(Kex::U64 cycles) {
  return {.cycles = cycles,
          .heap = heap(),
          .resident = residentBytes(),
          .cpuSeconds = static_cast<double>(std::clock()) / CLOCKS_PER_SEC};
}

double allocationsPerCycle(Mark const& from, Mark const& to) {
  return static_cast<double>(to.heap.allocations - from.heap.allocations) /
         static_cast<double>(to.cycles - from.cycles);
}

void print(unsigned percent, Mark const& from, Mark const& to) {
  double const microseconds =
      1e6 * (to.cpuSeconds - from.cpuSeconds) / static_cast<double>(to.cycles - from.cycles);
  std::printf(
      "%3u %%  %9llu cycles  %6llu heap blocks  %8llu bytes  %6llu KiB resident  "
      "%7.2f us/cycle  %7.2f allocations/cycle\n",
      percent, to.cycles, Kex::U64{to.heap.liveBlocks}, Kex::U64{to.heap.liveBytes},
      to.resident / 1024, microseconds, allocationsPerCycle(from, to));
  std::fflush(stdout);
}

/// Whether nothing has grown from one mark to another.
bool isFlat(std::vector<Mark> const& marks) {
  Mark const& first = marks[1];
  bool flat = true;
  for (std::size_t i = 2; i < marks.size(); ++i) {
    double const cost = allocationsPerCycle(marks[i - 1], marks[i]);
    if (marks[i].heap.liveBlocks > first.heap.liveBlocks ||
        marks[i].heap.liveBytes > first.heap.liveBytes + kRounding) {
      std::fprintf(stderr, "soak: memory has grown after %llu cycles\n", marks[i].cycles);
      flat = false;
    }
    if (cost > (1 + kFlat) * allocationsPerCycle(marks[0], first)) {
      std::fprintf(stderr, "soak: a cycle has become dearer after %llu cycles\n", marks[i].cycles);
      flat = false;
    }
  }
  return flat;
}

int soak(Kex::U64 cycles) {
  Agent::Plugin const plugin(Agent::Plugin::defaultFile());
  SwappedSlot slot(plugin);
  // One round beforehand, so that everything that is made once has been made.
  Kex::U64 next = 0;
  auto const runTo = [&](Kex::U64 end) {
    while (next < end) {
      slot.swap(next++);
    }
  };
  runTo(SwappedSlot::kRound);
  constexpr unsigned kPercents[] = {10, 50, 100};
  std::vector<Mark> marks;
  marks.reserve(1 + std::size(kPercents));
  marks.push_back(markAt(next));
  for (unsigned const percent : kPercents) {
    Kex::U64 const rounds = cycles * percent / 100 / SwappedSlot::kRound;
    runTo((1 + rounds) * SwappedSlot::kRound);
    marks.push_back(markAt(next));
    print(percent, marks[marks.size() - 2], marks.back());
  }
  std::printf("swaps missed: %llu, changes seen that were none: %llu\n", slot.missed(),
              slot.unexpected());
  bool const isGood = isFlat(marks) && slot.missed() == 0 && slot.unexpected() == 0;
  return isGood ? 0 : 1;
}

/// The number of cycles that the command line asks for; 0 when it is not understood.
Kex::U64 cyclesOf(int argc, char const* const* argv) {
  if (argc == 1) {
    return kDefaultCycles;
  }
  Kex::U64 cycles = 0;
  char const* const end = argv[1] + std::strlen(argv[1]);
  auto const [stop, error] = std::from_chars(argv[1], end, cycles);
  bool const isNumber = argc == 2 && stop == end && error == std::errc();
  return isNumber && cycles >= kFewestCycles ? cycles : 0;
}

int run(int argc, char const* const* argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  Kex::U64 const cycles = cyclesOf(argc, argv);
  if (cycles == 0) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  return soak(cycles);
}

}  // namespace

}  // namespace Bench

int main(int argc, char** argv) {
  try {
    return Bench::run(argc, argv);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "soak: %s\n", error.what());
    return 1;
  }
}
