// Compares the built-in descriptors with the model files made from their tables, on any FRU area.
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "agent/base/JsonDocument.h"
#include "agent/models/ModelDescriptor.h"
#include "agent/models/ModelFile.h"
#include "agent/models/ModelFolder.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/Setup.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/trace/Trace.h"

namespace {

using Descriptor = Kex::Ptr<Ipmi::SupportedPowerSupplyDescriptorBase>;
using Pairs = std::map<std::string, std::pair<Descriptor, Descriptor>>;

std::string traced;

/// The built-in descriptors, each with the one of the file.
Pairs makePairs() {
  Fuzz::registerDescriptors();
  Pairs pairs;
  auto const registry = Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  for (auto walk = registry->powerSupplyDescriptorIterator(); walk; ++walk) {
    pairs[walk->name().charPtr()].first = *walk;
  }
  for (std::string const& file : Agent::modelFilesIn(PSU_SAMPLES "/models")) {
    for (auto const& model :
         Agent::parseModels(Agent::parseJson(Agent::readModelText(file)), file)) {
      pairs[model->name].second = Agent::newDescriptor(model);
    }
  }
  Kex::TraceHandle::levelsIs("EmersonIpmiIdentifier", 3);
  Kex::TraceHandle::facilityIs("EmersonIpmiIdentifier", true);
  Kex::traceSinkIs([](Kex::TraceRecord const& record) {
    traced += std::to_string(record.level) + record.text.charPtr() + '\n';
  });
  return pairs;
}

/// What `descriptor` says and traces of a supply.
std::string answer(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor,
                   Kex::Ptr<Ipmi::IdpromContents> const& contents) {
  traced.clear();
  descriptor.doGenerateFdl(contents);
  return traced + (descriptor.managed() ? "managed " : "") + std::string(descriptor.fdl().view());
}

/// An area whose fields are pieces of the input, keys now and then.
Kex::Ptr<Hal::Buf> areaOf(Fuzz::Input& input) {
  constexpr std::string_view kKeys[] = {
      "DS3000PE-3-001", "DS2700DC-3",     "DS2900-3",   "DS760SL-3",       "DS460S-3    ",
      "DS460SDC-3-001", "DS500SPE-3-401", "DS750PED-3", "DS1100PED-3-402", "DS1600SPE-3-403"};
  std::string area("\x01\x00\x00", 3);
  for (unsigned field = 0; field < 5; ++field) {
    std::uint8_t const choice = input.byte();
    std::string text = input.text(4);
    if (choice < 128) {
      text += kKeys[choice % std::size(kKeys)];
    }
    text += input.text(30);
    std::uint8_t const encoding = input.byte() & 0xC0U;
    area += static_cast<char>(encoding | text.size());
    area += text;
  }
  area += '\xC1';
  auto const rest = input.rest();
  area.append(rest.begin(), rest.end());
  auto buffer = Kex::make<Hal::Buf>(0U);
  buffer->strIs(Kex::String8(std::string_view(area)));
  return buffer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static Pairs const pairs = makePairs();
  Fuzz::Input input(data, size);
  auto const contents = Kex::make<Ipmi::IdpromContents>();
  contents->productInfoIs(Ipmi::ProductInfoArea::ProductInfoAreaIs(areaOf(input)));
  for (auto const& [name, both] : pairs) {
    Fuzz::require(both.first && both.second);
    Fuzz::require(answer(*both.first, contents) == answer(*both.second, contents));
  }
  return 0;
}
