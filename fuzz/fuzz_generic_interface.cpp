// Fuzzes the generic interface: texts as values of every type, and requests of any kind to any
// attribute with any arguments. Whatever is refused is refused by a framework exception.
#include <array>
#include <memory>
#include <vector>

#include "agent/transport/SimulatedBus.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/Setup.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/time/ActivityManager.h"

namespace {

using Kex::GenericIf;
using Kex::Ptr;

/// The types that text is made for and objects are created of.
std::vector<Kex::KexType*> const& types() {
  static auto const& records = *new std::vector{
      &Kex::typeOf<bool>(),
      &Kex::typeOf<Kex::U8>(),
      &Kex::typeOf<Kex::U32>(),
      &Kex::typeOf<Kex::U64>(),
      &Kex::typeOf<Kex::String8>(),
      &Kex::typeOf<Kex::Name>(),
      &Kex::Clock::_fwkType(),
      &Smbus::VornAddress::_fwkType(),
      &Hardware::SmbusDeviceId::_fwkType(),
      &Hal::Buf::_fwkType(),
      &Ipmi::IdpromContents::_fwkType(),
      &PowerSupplyDetector::SlotDriver::_fwkType(),
      Kex::KexType::typeNode("Emerson::PmbusIdentifier::Identifier"),
      Kex::KexType::typeNode("Emerson::IpmiIdentifier::DS2900"),
  };
  return records;
}

constexpr std::array kObjects = {
    "/Slot/EmersonPmbus",
    "/Slot",
    "/Slot/EmersonPmbus/idprom",
    "/Ipmi::SupportedPowerSupplyRegistry/DS2900",
    "/Ipmi::SupportedPowerSupplyRegistry",
};

Ptr<GenericIf> value(Fuzz::Input& input) {
  Kex::U8 const type = input.byte();
  if (type >= 0xF0) {
    return {};
  }
  return types()[type % types().size()]->valueFromText(
      Kex::String8(std::string_view(input.text(40))));
}

Ptr<GenericIf> list(Fuzz::Input& input) {
  auto const arguments = Kex::make<GenericIf::List_>();
  for (unsigned left = input.byte() % 6; left > 0; --left) {
    arguments->append(value(input));
  }
  return arguments;
}

void request(Fuzz::Input& input) {
  char const* const path = kObjects[input.byte() % kObjects.size()];
  auto const object = Kex::strepToValue<Ptr<Kex::PtrInterface>>(path);
  if (!object) {
    return;
  }
  auto const adapter = Kex::KexType::genericIf(object, input.byte() % 8 == 0);
  Kex::U8 const place = input.byte();
  auto const& attributes = adapter->type().attributeQ();
  Kex::AttributeId const id = place < attributes.size()
                                  ? attributes[place]->id()
                                  : 0x100U + place + 0x100U * (input.byte() % 2);
  Kex::U8 const code = input.byte();
  Ptr<GenericIf> const index = code % 2 == 0 ? Ptr<GenericIf>() : value(input);
  Ptr<GenericIf> const argument = input.byte() % 3 == 0 ? value(input) : list(input);
  constexpr std::array<Kex::U8, 6> kCodes = {0, 128, 129, 1, 2, 77};
  auto const answer = adapter->access({.id = id,
                                       .code = kCodes[(code / 2U) % kCodes.size()],
                                       .index = index.ptr(),
                                       .value = argument.ptr()});
  if (answer) {
    answer->text();
  }
}

void create(Fuzz::Input& input) {
  Kex::KexType const& type = *types()[input.byte() % types().size()];
  Ptr<GenericIf> const arguments = list(input);
  type.genericIf(arguments.ptr(), false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  Fuzz::registerDescriptors();

  Fuzz::Input input(data, size);
  Fuzz::SlotParts const slot(
      std::make_unique<Agent::SimulatedBus>(Agent::SimulatedSupply(Fuzz::kImage, "EMERSON")));
  Kex::ActivityManager& loop = Kex::activityManager();
  loop.runUntil(loop.config().clock()->time() + (input.byte() % 2 == 0 ? 0.0 : 0.3));
  for (unsigned left = 16; left > 0 && !input.isEmpty(); --left) {
    try {
      input.byte() % 16 == 0 ? create(input) : request(input);
    } catch (Kex::Exception const&) {
      // A refusal.
    }
  }
  return 0;
}
