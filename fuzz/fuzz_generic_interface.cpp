// Fuzzes the generic interface: texts as values of every type, and requests of any kind to any
// attribute with any arguments, while supplies come and go. Whatever is refused is refused by a
// framework exception; and once what a person configures is put back, the slot tells its supply.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

#include "agent/transport/SimulatedBus.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/Setup.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/time/ActivityManager.h"
#include "pmbus/Identifier.h"

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

/// The supply in the slot; `isOther` has a serial number of its own.
Agent::SimulatedSupply supply(bool isOther) {
  auto image = Fuzz::kImage;
  if (isOther) {
    std::string_view const serialNumber = Fuzz::kSerialNumber;
    auto const at = std::ranges::search(image, serialNumber);
    ++at.back();
    --image.back();
  }
  return {image, "EMERSON"};
}

class Slot {
 public:
  explicit Slot(std::unique_ptr<Agent::SimulatedBus> bus =
                    std::make_unique<Agent::SimulatedBus>(supply(false)))
      : bus_(*bus),
        parts_(std::move(bus)),
        identifier_(Kex::dynamicCast<Emerson::PmbusIdentifier::Identifier>(
            parts_.driver->identifier("EmersonPmbus"))) {}

  /// What happens to the slot as the fuzzer wants it.
  void suffer(Fuzz::Input& input) {
    run(input.byte() % 2 == 0 ? 0.0 : 0.3);
    for (unsigned left = 16; left > 0 && !input.isEmpty(); --left) {
      try {
        switch (Kex::U8 const what = input.byte(); what % 16) {
          case 0: create(input); break;
          case 1: run(what / 64.0); break;
          case 2: bus_.supplyIs({}); break;
          case 3: bus_.supplyIs(supply(what % 32 == 3)); break;
          default: request(input); break;
        }
      } catch (Kex::Exception const&) {
        // A refusal.
      }
      wasRemoved_ = wasRemoved_ || !isHeld();
    }
  }

  /// Another supply takes the place of whatever there is, and must be told.
  void recover() {
    Fuzz::require(isAlive() || !isLeftAtWork());
    configure();
    bus_.supplyIs(supply(true));
    double const end = clock()->time() + kHealingTime;
    while (!isTold() && clock()->time() < end) {
      Kex::activityManager().runUntil(std::min(end, clock()->nextDeadline()));
    }
    Fuzz::require(isTold());
    Fuzz::require(isAlive());
  }

 private:
  /// Longer than any back-off and a detection take together.
  static constexpr double kHealingTime = 30;

  static Ptr<Kex::Clock> const& clock() { return Kex::activityManager().config().clock(); }
  static void run(double seconds) { Kex::activityManager().runUntil(clock()->time() + seconds); }

  /// Puts back what a person configures.
  void configure() {
    Fuzz::registerDescriptors();
    if (!isHeld()) {
      parts_.driver->identifierIs("EmersonPmbus", identifier_);
    }
    identifier_->kexDoZombieReactors(false);
    identifier_->notifierIs(clock());
    identifier_->derivedConstructedIs(true);
    identifier_->pollForInsertionRequestIs(parts_.vorn->newRequest());
    identifier_->identifySupplyRequestIs(parts_.vorn->newRequest());
    identifier_->checkSupplyRequestIs(parts_.vorn->newRequest());
    // The addresses.
    identifier_->doInitialize();
    identifier_->pollIntervalIs(1);
    identifier_->pollDelayIs(0.2);
    identifier_->reviewIntervalIs(60);
    identifier_->mfrIdSupportedDelAll();
    identifier_->mfrIdSupportedIs("EMERSON", true);
    identifier_->hasNotificationActiveIs(true);
  }

  bool isHeld() const {
    return parts_.driver->identifier("EmersonPmbus").ptr() == identifier_.ptr();
  }

  /// Whether nothing was taken from it that it needs to go on.
  bool isLeftAtWork() const {
    return !wasRemoved_ && identifier_->constructed() && identifier_->initialized() &&
           identifier_->status() && identifier_->notifier() &&
           identifier_->isRegisteredNotifiee() && identifier_->hasNotificationActive() &&
           identifier_->pollForInsertionRequest() && identifier_->identifySupplyRequest() &&
           identifier_->checkSupplyRequest();
  }

  /// Whether one request is under way, or else a deadline is set.
  bool isAlive() const {
    auto const isUnderWay = [](auto const& request) {
      return int{request && request->isUnderWay()};
    };
    return isUnderWay(identifier_->pollForInsertionRequest()) +
               isUnderWay(identifier_->identifySupplyRequest()) +
               isUnderWay(identifier_->checkSupplyRequest()) +
               int{std::isfinite(identifier_->timeMin())} ==
           1;
  }

  bool isTold() const {
    auto const* const told = parts_.status->supply();
    return told != nullptr && told->verdict == Hardware::PowerSupplySlot::Verdict::identified &&
           !told->fdl.empty() && told->product &&
           told->product->serialNumber() != Fuzz::kSerialNumber;
  }

  Agent::SimulatedBus& bus_;
  Fuzz::SlotParts parts_;
  Ptr<Emerson::PmbusIdentifier::Identifier> identifier_;
  bool wasRemoved_ = false;
};

void live(Fuzz::Input& input) {
  Slot slot;
  slot.suffer(input);
  slot.recover();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  // Twice: what is made once a process is made the first time.
  std::size_t after[2];
  for (std::size_t& objects : after) {
    Fuzz::registerDescriptors();
    Fuzz::Input input(data, size);
    live(input);
    Fuzz::registerDescriptors();
    objects = Kex::VFPtrInterface::liveObjects();
  }
  Fuzz::require(after[0] == after[1]);
  return 0;
}
