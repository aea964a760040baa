// A slot whose supply is swapped over and over.
#include "bench/soak/SwappedSlot.h"

#include <cmath>
#include <utility>

#include "host/kex/time/ActivityManager.h"

namespace Bench {

namespace {

using Hardware::PowerSupplySlot::Verdict;

/// Seconds within which a change must be seen: several times what the slowest takes.
constexpr double kPatience = 30;
constexpr double kLongestLeftAlone = 2;

/// Numbers whose multiples modulo 1 are spread evenly, and differently for the two.
constexpr double kGoldenRatio = 0.618033988749895;
constexpr double kRootOfTwo = 0.414213562373095;

double spread(Kex::U64 number, double step) {
  double whole = 0;
  return kLongestLeftAlone * std::modf(static_cast<double>(number) * step, &whole);
}

}  // namespace

SwappedSlot::SwappedSlot(Agent::Plugin const& plugin, std::unique_ptr<Agent::SimulatedBus> bus)
    : samples_{Sample("ds2900"), Sample("ds750")},
      bus_(*bus),
      slot_("PowerSupply1", std::move(bus), plugin) {
  slot_.onSupplyIs([this](Supply const& supply) { handleSupply(supply); });
  // The slot has had a supply beforehand, so that the first swap is one like all others.
  change(std::nullopt, {.verdict = Verdict::absent, .serialNumber = {}}, 0);
  change(samples_.front().supply(), expectedOf(samples_.front()), 0);
}

SwappedSlot::Expected SwappedSlot::expectedOf(Sample const& sample) {
  return {.verdict = Verdict::identified,
          .serialNumber = Kex::String8(std::string_view(sample.serialNumber()))};
}

void SwappedSlot::swap(Kex::U64 number) {
  Sample& sample = samples_[number / 2 % samples_.size()];
  sample.serialNumberIs(std::to_string(number));
  if (number % 2 == 0) {
    change(std::nullopt, {.verdict = Verdict::absent, .serialNumber = {}},
           spread(number, kRootOfTwo));
  }
  change(sample.supply(), expectedOf(sample), spread(number, kGoldenRatio));
}

void SwappedSlot::change(std::optional<Agent::SimulatedSupply> const& supply, Expected expected,
                         double leftAlone) {
  Kex::ActivityManager& loop = Kex::activityManager();
  Kex::Clock const& clock = *loop.config().clock();
  expected_ = std::move(expected);
  bus_.supplyIs(supply);
  double const patience = clock.time() + kPatience;
  while (expected_ && clock.time() < patience) {
    loop.runUntil(std::min(clock.nextDeadline(), patience));
  }
  if (expected_) {
    ++missed_;
  }
  loop.runUntil(clock.time() + leftAlone);
}

void SwappedSlot::handleSupply(Supply const& supply) {
  Sight sight{.verdict = supply.verdict,
              .serialNumber = supply.product ? supply.product->serialNumber() : Kex::String8(),
              .fdl = supply.fdl};
  if (sight_ == sight) {
    return;
  }
  sight_ = std::move(sight);
  if (expected_ && expected_->verdict == sight_->verdict &&
      expected_->serialNumber == sight_->serialNumber) {
    expected_.reset();
  } else {
    ++unexpected_;
  }
}

}  // namespace Bench
