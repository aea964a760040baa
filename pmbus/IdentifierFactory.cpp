// Emerson::PmbusIdentifier::IdentifierFactory, what gives slots their identifiers.
#include "pmbus/IdentifierFactory.h"

#include "host/kex/time/ActivityManager.h"
#include "pmbus/Identifier.h"

namespace Emerson::PmbusIdentifier {

namespace {

constexpr char kIdentifierName[] = "EmersonPmbus";
constexpr Hardware::SmbusDeviceId kDeviceId{0x58};
constexpr Kex::U8 kFruInfoCommand = 0xB0;

}  // namespace

IdentifierFactory::~IdentifierFactory() = default;

Kex::String8 IdentifierFactory::attributeString(Kex::AttributeId id) const {
  Kex::String8 text = "unknown";
  text = IdentifierFactoryBase::attributeString(id);
  return text;
}

void IdentifierFactory::doAddIdentifierToDriver(
    Kex::Ptr<PowerSupplyDetector::SlotDriver> const& driver,
    Kex::Ptr<Hardware::PowerSupplySlot::SlotConfig const> const& config,
    Kex::Ptr<Hardware::PowerSupply::CellConfig> const& /*cellConfig*/,
    Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus> const& status) {
  Kex::Ptr<Hardware::Vorn> const vorn = config->smbusVornDesc()->vorn();
  Kex::Ptr<Kex::Clock const> const clock = Kex::activityManager().config().clock();
  auto const poll = vorn->newRequest();
  auto const identify = vorn->newRequest();
  auto const check = vorn->newRequest();
  auto const identifier =
      Kex::make<Identifier>(clock, config, status, poll, identify, check, nullptr, nullptr, nullptr,
                            kDeviceId, kFruInfoCommand);
  identifier->hasNotificationActiveIs(true);
  driver->identifierIs(kIdentifierName, identifier);
}

Kex::Ptr<IdentifierFactory> identifierFactoryFactory(Kex::Name name) {
  return Kex::make<IdentifierFactory>(std::move(name));
}

}  // namespace Emerson::PmbusIdentifier
