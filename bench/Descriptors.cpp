// What a walk over all descriptors costs when none matches.
#include <benchmark/benchmark.h>

#include <memory>

#include "bench/ByHand.h"
#include "bench/Subject.h"
#include "bench/support/Sample.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"

namespace Bench {

namespace {

using Ipmi::SupportedPowerSupplyRegistry;

ByHand::Fields fieldsOf(Ipmi::IdpromContents const& contents) {
  Ipmi::ProductInfoArea const& area = *contents.productInfo();
  return {.manufacturerName = area.manufacturerName().charPtr(),
          .productName = area.productName().charPtr(),
          .partNumber = area.partNumber().charPtr(),
          .productVersion = area.productVersion().charPtr(),
          .serialNumber = area.serialNumber().charPtr()};
}

/// Two values in turn, so that each is another than the one before.
template <class T>
class InTurn {
 public:
  InTurn(T first, T second) : values_{std::move(first), std::move(second)} {}
  T const& next() { return values_[++turn_ % 2]; }

 private:
  std::array<T, 2> values_;
  unsigned turn_ = 0;
};

auto contentsInTurn() {
  Sample sample("faulty/unrecognised");
  auto const first = sample.contents();
  sample.serialNumberIs("12345678901");
  return InTurn(first, sample.contents());
}

std::function<void()> walking() {
  auto const registry = Kex::Entity::singleton<SupportedPowerSupplyRegistry>();
  return [registry, inTurn = contentsInTurn()]() mutable {
    auto const& contents = inTurn.next();
    for (auto walk = registry->powerSupplyDescriptorIterator(); walk; ++walk) {
      walk->doGenerateFdl(contents);
    }
  };
}

std::function<void()> walkingByHand() {
  auto contents = contentsInTurn();
  InTurn fields(fieldsOf(*contents.next()), fieldsOf(*contents.next()));
  return [fields, outputs = std::make_shared<ByHand::Outputs>()]() mutable {
    benchmark::DoNotOptimize(ByHand::walk(fields.next(), *outputs));
    benchmark::ClobberMemory();
  };
}

}  // namespace

std::vector<Subject> descriptorSubjects() {
  return {{.name = "walk", .prepare = &walking},
          {.name = "walk by hand", .prepare = &walkingByHand}};
}

}  // namespace Bench
