// What a descriptor that matches costs, and a walk over all of them when none does.
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

/// Two supplies of one model in turn, so that every text is another than the one before.
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
  Sample sample("ds2900");
  auto const first = sample.contents();
  sample.serialNumberIs("12345678901");
  return InTurn(first, sample.contents());
}

std::function<void()> matching() {
  auto const registry = Kex::Entity::singleton<SupportedPowerSupplyRegistry>();
  auto const descriptor = registry->powerSupplyDescriptors().member("DS2900");
  return [descriptor, contents = contentsInTurn()]() mutable {
    descriptor->doGenerateFdl(contents.next());
  };
}

std::function<void()> filling() {
  auto contents = contentsInTurn();
  InTurn fields(fieldsOf(*contents.next()), fieldsOf(*contents.next()));
  return [fields, fdl = std::make_shared<std::string>()]() mutable {
    ByHand::fill(fields.next(), *fdl);
    benchmark::ClobberMemory();
  };
}

std::function<void()> walking() {
  auto const registry = Kex::Entity::singleton<SupportedPowerSupplyRegistry>();
  return [registry, contents = Sample("faulty/unrecognised").contents()] {
    for (auto walk = registry->powerSupplyDescriptorIterator(); walk; ++walk) {
      walk->doGenerateFdl(contents);
    }
  };
}

std::function<void()> walkingByHand() {
  return [fields = fieldsOf(*Sample("faulty/unrecognised").contents())] {
    benchmark::DoNotOptimize(ByHand::walk(fields));
  };
}

}  // namespace

std::vector<Subject> descriptorSubjects() {
  return {{.name = "match", .prepare = &matching},
          {.name = "fill by hand", .prepare = &filling},
          {.name = "walk", .prepare = &walking},
          {.name = "walk by hand", .prepare = &walkingByHand}};
}

}  // namespace Bench
