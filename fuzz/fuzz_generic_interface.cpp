// Fuzzes the generic interface: texts as values of every type, and requests of any kind to any
// attribute with any arguments. Whatever is refused is refused by a framework exception.
#include <array>
#include <memory>
#include <vector>

#include "agent/transport/SimulatedBus.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/Setup.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/ActivityManager.h"
#include "host/kex/Directory.h"
#include "host/kex/GenericIf.h"

namespace {

using Kex::GenericIf;
using Kex::Ptr;

constexpr std::array kTypes = {
    "bool",
    "U8",
    "U32",
    "U64",
    "Kex::String8",
    "Kex::Name",
    "Kex::Clock",
    "Smbus::VornAddress",
    "Hardware::SmbusDeviceId",
    "Hal::Buf",
    "Ipmi::IdpromContents",
    "PowerSupplyDetector::SlotDriver",
    "Emerson::PmbusIdentifier::Identifier",
    "Emerson::IpmiIdentifier::DS2900",
};

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
  return Kex::KexType::typeNode(kTypes[type % kTypes.size()])
      ->valueFromText(Kex::String8(std::string_view(input.text(40))));
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
  auto const* const type = Kex::KexType::typeNode(kTypes[input.byte() % kTypes.size()]);
  Ptr<GenericIf> const arguments = list(input);
  type->genericIf(arguments.ptr(), false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  Fuzz::registerDescriptors();
  // The types that only text is made for must be known before they are asked for by name.
  static auto const& records = *new std::array{&Kex::typeOf<bool>(),
                                               &Kex::typeOf<Kex::U8>(),
                                               &Kex::typeOf<Kex::U32>(),
                                               &Kex::typeOf<Kex::U64>(),
                                               &Kex::typeOf<Kex::String8>(),
                                               &Kex::typeOf<Kex::Name>(),
                                               &Kex::Clock::_fwkType(),
                                               &Smbus::VornAddress::_fwkType(),
                                               &Hal::Buf::_fwkType(),
                                               &Hardware::SmbusDeviceId::_fwkType(),
                                               &Ipmi::IdpromContents::_fwkType(),
                                               &PowerSupplyDetector::SlotDriver::_fwkType()};
  Fuzz::require(records.size() == 12);

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
