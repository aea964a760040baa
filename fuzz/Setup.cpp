// What fuzzers of the slot share: an honest supply's image, the descriptors, a slot.
#include "fuzz/Setup.h"

#include <numeric>
#include <vector>

#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/generic/Holder.h"
#include "ipmi/model/DescriptorTypes.h"
#include "pmbus/IdentifierFactory.h"

namespace Fuzz {

namespace {

std::array<Kex::U8, 48> makeImage() {
  constexpr char kText[] =
      "\x01\x00\x00\x00\x01\x00\x00\xfe"
      "\x01\x05\x00\xc4"
      "MAKE\xc2"
      "PS\xc8"
      "DS2900-3\xc2"
      "R1\xc6"
      "S12345\xc0\xc0\xc1";
  std::array<Kex::U8, 48> image{};
  std::copy_n(kText, sizeof kText - 1, image.begin());
  // The area ends with its zero checksum.
  image.back() = static_cast<Kex::U8>(-std::accumulate(image.begin() + 8, image.end(), 0U));
  return image;
}

}  // namespace

std::array<Kex::U8, 48> const kImage = makeImage();

void registerDescriptors() {
  static std::vector const descriptors = [] {
    std::vector<Kex::Ptr<Ipmi::SupportedPowerSupplyDescriptorBase>> made;
    for (std::string_view const name : Emerson::IpmiIdentifier::kTypeNames) {
      auto const arguments = Kex::make<Kex::GenericIf::List_>();
      arguments->append(Kex::holderOf(Kex::Name(Kex::String8(name))));
      std::string const fullName = "Emerson::IpmiIdentifier::" + std::string(name);
      auto const adapter =
          Kex::KexType::typeNode(fullName.c_str())->genericIf(arguments.ptr(), false);
      made.push_back(Kex::dynamicCast<Ipmi::SupportedPowerSupplyDescriptorBase>(adapter->object()));
    }
    return made;
  }();
  auto const registry = Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  for (auto const& name : registry->memberNames()) {
    registry->powerSupplyDescriptorDel(name);
  }
  for (auto const& descriptor : descriptors) {
    registry->powerSupplyDescriptorIs(descriptor);
  }
}

SlotParts::SlotParts(std::unique_ptr<Smbus::Transport> transport)
    : vorn(Kex::make<Hardware::Vorn>(Kex::make<Smbus::Bus>(std::move(transport)))),
      status(Kex::make<Hardware::PowerSupplySlot::SlotStatus>(Kex::Name("Slot"))),
      driver(Kex::make<PowerSupplyDetector::SlotDriver>(Kex::Name("Slot"))) {
  auto const config = Kex::make<Hardware::PowerSupplySlot::SlotConfig>(
      Kex::Name("Slot"), Kex::make<SmbusVorn::VornDesc>(vorn));
  Kex::root().memberIs(driver);
  auto const factory = Emerson::PmbusIdentifier::identifierFactoryFactory("IdentifierFactory");
  factory->doAddIdentifierToDriver(driver, config, nullptr, status);
}

SlotParts::~SlotParts() {
  Kex::root().memberDel(driver->name());
  driver->identifierDel("EmersonPmbus");
}

}  // namespace Fuzz
