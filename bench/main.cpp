// bench [SUBJECT...]: counts the instructions of each subject, of all when none is named, under
// callgrind; alone, measures their times.
#include <benchmark/benchmark.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <span>

#include "bench/Subject.h"

namespace Bench {

namespace {

std::vector<Subject> allSubjects(Agent::Plugin const& plugin) {
  std::vector<Subject> all;
  for (std::vector<Subject> const& some :
       {floorSubjects(), slotSubjects(plugin), flightSubjects(plugin), descriptorSubjects(),
        traceSubjects()}) {
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

/// Prints each figure that is counted.
void printCounts(Agent::Plugin const& plugin) {
  for (auto const& counts : {lifeCounts(plugin), slotCounts(plugin), flightCounts(plugin)}) {
    for (Count const& one : counts) {
      std::printf("%s %.17g\n", one.name.c_str(), one.value);
    }
  }
}

/// Leaves a dump for each subject, triggered by "NAME OPERATIONS".
void countInstructions(std::vector<Subject> const& subjects) {
  constexpr unsigned kMostRuns = 100;
  constexpr unsigned kOperations = 20000;
  for (Subject const& subject : subjects) {
    unsigned const runs = std::clamp(kOperations / subject.operations, 1U, kMostRuns);
    auto const body = subject.prepare();
    body();
    std::string const trigger = subject.name + ' ' + std::to_string(runs * subject.operations);
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    for (unsigned i = 0; i < runs; ++i) {
      body();
    }
    CALLGRIND_DUMP_STATS_AT(trigger.c_str());
    CALLGRIND_STOP_INSTRUMENTATION;
  }
}

void measureTimes(std::vector<Subject> const& subjects) {
  for (Subject const& subject : subjects) {
    benchmark::RegisterBenchmark(subject.name.c_str(), [subject](benchmark::State& state) {
      auto const body = subject.prepare();
      body();
      for ([[maybe_unused]] auto const iteration : state) {
        body();
      }
      state.counters["operations"] = subject.operations;
    });
  }
  benchmark::RunSpecifiedBenchmarks();
}

void run(int argc, char** argv) {
  Agent::Plugin const plugin(Agent::Plugin::defaultFile());
  std::vector<Subject> subjects = allSubjects(plugin);
  if (RUNNING_ON_VALGRIND != 0) {
    std::span const names(argv + 1, argv + argc);
    if (names.empty()) {
      printCounts(plugin);
    } else {
      std::erase_if(subjects, [names](Subject const& subject) {
        return std::ranges::find(names, subject.name) == names.end();
      });
    }
    return countInstructions(subjects);
  }
  benchmark::Initialize(&argc, argv);
  measureTimes(subjects);
}

}  // namespace

}  // namespace Bench

int main(int argc, char** argv) {
  try {
    Bench::run(argc, argv);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
