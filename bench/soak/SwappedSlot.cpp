// A slot whose supply is swapped over and over.
#include "bench/soak/SwappedSlot.h"

#include <cmath>
#include <utility>

#include "host/kex/time/ActivityManager.h"

namespace Bench {

namespace {

using Hardware::PowerSupplySlot::Verdict;

/// Seconds within which a change must be told: a check and a detection, after a review where
/// nothing else shows it.
constexpr double kSeen = 3;
constexpr double kReviewed = PowerSupplyDetector::Timings().reviewInterval + kSeen;
constexpr double kReviewedWithoutSerialNumber =
    PowerSupplyDetector::Timings::kMostWithoutSerialNumber + kSeen;
/// Seconds that a supply may be away without its description being taken away.
constexpr double kMoment = 0.3;
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
  pull(0);
  insert(kSeen, 0);
}

std::string SwappedSlot::textsOf(Ipmi::ProductInfoArea const& product) {
  std::string texts;
  for (auto const& text :
       {product.partNumber(), product.productVersion(), product.serialNumber()}) {
    texts.append(text.view()) += '/';
  }
  return texts;
}

void SwappedSlot::swap(Kex::U64 number) {
  constexpr std::string_view kBlank = "                ";
  double const leftAlone = spread(number, kGoldenRatio);
  Kex::U64 const what = number % kRound;
  if (what != 3 && what != 4) {
    std::string const before = sample().serialNumber();
    current_ = (current_ + 1) % samples_.size();
    sample().serialNumberIs(what == 2 ? before : what >= 6 ? kBlank : std::to_string(number));
  }
  switch (what) {
    case 0:
    case 5: pull(spread(number, kRootOfTwo)); return insert(kSeen, leftAlone);
    case 1: return insert(kSeen, leftAlone);
    case 2: return insert(kReviewed, leftAlone);
    case 3: sample().update(); return insert(kReviewed, leftAlone);
    case 4: return disturb();
    default: return insert(kReviewedWithoutSerialNumber, leftAlone);
  }
}

void SwappedSlot::pull(double leftAlone) {
  change(std::nullopt, {.verdict = Verdict::absent, .texts = {}}, kSeen, leftAlone);
}

void SwappedSlot::insert(double bound, double leftAlone) {
  change(sample().supply(),
         {.verdict = Verdict::identified, .texts = textsOf(*sample().contents()->productInfo())},
         bound, leftAlone);
}

void SwappedSlot::disturb() {
  Kex::ActivityManager& loop = Kex::activityManager();
  Kex::Clock const& clock = *loop.config().clock();
  bus_.supplyIs(std::nullopt);
  loop.runUntil(clock.time() + kMoment);
  bus_.supplyIs(sample().supply());
  loop.runUntil(clock.time() + kReviewedWithoutSerialNumber);
}

void SwappedSlot::change(std::optional<Agent::SimulatedSupply> const& supply, Sight expected,
                         double bound, double leftAlone) {
  Kex::ActivityManager& loop = Kex::activityManager();
  Kex::Clock const& clock = *loop.config().clock();
  expected_ = std::move(expected);
  bus_.supplyIs(supply);
  double const patience = clock.time() + bound;
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
              .texts = supply.product ? textsOf(*supply.product) : std::string()};
  if (sight_ == sight && fdl_ == supply.fdl) {
    return;
  }
  sight_ = std::move(sight);
  fdl_ = supply.fdl;
  if (expected_ == sight_) {
    expected_.reset();
  } else {
    ++unexpected_;
  }
}

}  // namespace Bench
