// What is measured.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "agent/slots/Plugin.h"

namespace Bench {

/// Something whose instructions are counted, or whose time is measured.
struct Subject {
  std::string name;
  /// How many operations one run does.
  unsigned operations = 1;
  /// Makes what a run needs, which lives as long as the function that it returns: the run.
  std::function<std::function<void()>()> prepare;
};

/// What each file of measurements has to offer. `plugin` must outlive the subjects.
std::vector<Subject> floorSubjects();
std::vector<Subject> descriptorSubjects();
std::vector<Subject> slotSubjects(Agent::Plugin const& plugin);
std::vector<Subject> flightSubjects(Agent::Plugin const& plugin);
std::vector<Subject> traceSubjects();

/// A figure that is counted, not measured.
struct Count {
  std::string name;
  double value = 0;
};

std::vector<Count> lifeCounts(Agent::Plugin const& plugin);
std::vector<Count> slotCounts(Agent::Plugin const& plugin);
std::vector<Count> flightCounts(Agent::Plugin const& plugin);

}  // namespace Bench
