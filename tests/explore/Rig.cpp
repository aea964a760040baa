// A slot of which everything that happens to it is chosen: the bus's answers, outside acts, pauses.
#include "tests/explore/Rig.h"

#include <algorithm>
#include <stdexcept>

#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/base/Exception.h"
#include "host/kex/base/Format.h"
#include "host/kex/time/ActivityManager.h"
#include "tests/explore/Inside.h"

namespace explore {

using Hardware::PowerSupplySlot::Verdict;

namespace {

/// Far less than what is told apart, and more than how times are rounded.
constexpr double kNoTime = 1e-5;
/// When the transport gives a transaction up, and when the bus does, in seconds from its start.
constexpr double kTransportTimeout = kTick;
constexpr double kBusTimeout = 4 * kTick;
/// With its grace that is when the bus gives up, in milliseconds.
constexpr Hardware::SmbusTimeout kAddressTimeout{950};

Kex::ActivityManager& loop() { return Kex::activityManager(); }

}  // namespace

/// Tells when detection starts over; its addresses have a bus timeout that fits the ticks.
class Rig::Watched final : public Emerson::PmbusIdentifier::Identifier {
 public:
  template <class... Arguments>
  explicit Watched(Rig& rig, Arguments&&... arguments)
      : Identifier(std::forward<Arguments>(arguments)...), rig_(rig) {}

  void doInitialize() override {
    Identifier::doInitialize();
    setTimeouts();
  }

  void doResetIdentifier() override {
    rig_.reset();
    setTimeouts();
    Identifier::doResetIdentifier();
  }

 private:
  void setTimeouts() {
    auto address = vornAddr();
    address.busTimeoutIs(kAddressTimeout);
    vornAddrIs(address);
    address = mfrIdAddr();
    address.busTimeoutIs(kAddressTimeout);
    mfrIdAddrIs(address);
  }

  Rig& rig_;
};

/// Manages the supplies of one part number, and says in the FDL which one it was shown.
class Rig::Model final : public Ipmi::SupportedPowerSupplyDescriptorBase {
 public:
  Model(char const* name, char const* part)
      : SupportedPowerSupplyDescriptorBase(name), part_(part) {}
  static void rigIs(Rig* rig) {
    rig_ = rig;
    static bool const areThere = [] {
      auto const registry = Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
      registry->powerSupplyDescriptorIs(Kex::make<Model>("first", kFirstPart));
      registry->powerSupplyDescriptorIs(Kex::make<Model>("second", kSecondPart));
      return true;
    }();
    static_cast<void>(areThere);
  }

  void doGenerateFdl(Kex::Ptr<Ipmi::IdpromContents> const& idprom) override {
    auto const product = idprom->productInfo();
    managedIs(product->partNumber() == part_);
    fdlIs(managed() ? fdlOf(part_, product->serialNumber().charPtr()) : Kex::String8());
    if (rig_->interfere_) {
      rig_->doubts_ = kConfirming;
      std::exchange(rig_->interfere_, {})(*rig_);
    }
  }

 private:
  static inline Rig* rig_ = nullptr;
  char const* part_;
};

void Rig::Wire::start(Smbus::Transaction const& transaction, Kex::U64 ticket,
                      Smbus::AnswerSink& sink) {
  pending.reset();
  rig_.started(transaction);
  if (std::exchange(throwsAtStart, false)) {
    throw 1;
  }
  pending = {transaction, ticket, &sink, rig_.now()};
}

Rig::Rig()
    : wire_(new Wire(*this)),
      bus_(Kex::make<Smbus::Bus>(std::unique_ptr<Smbus::Transport>(wire_))),
      vorn_(Kex::make<Hardware::Vorn>(bus_)),
      status_(Kex::make<Hardware::PowerSupplySlot::SlotStatus>("status")),
      driver_(Kex::make<PowerSupplyDetector::SlotDriver>("driver")) {
  Model::rigIs(this);
  // So late that a second more does not change how times are rounded.
  constexpr double kStart = 0x1p33;
  run(std::max(kStart, std::floor(now()) + 1));
  identifier_ = newIdentifier(Agent::SimulatedSupply::kDevice);
  identifier_->pollIntervalIs(kPollInterval);
  identifier_->pollDelayIs(kPollDelay);
  identifier_->reviewIntervalIs(kReviewInterval);
  identifier_->leastRepetitionIs(kLeastRepetition);
  identifier_->mostRepetitionIs(kMostRepetition);
  driver_->identifierIs("EmersonPmbus", identifier_);
  run(now());
  check();
}

Rig::~Rig() = default;

Kex::Ptr<Emerson::PmbusIdentifier::Identifier> Rig::newIdentifier(Kex::U8 deviceId) {
  auto const identifier = Kex::make<Watched>(
      *this, loop().config().clock(),
      Kex::make<Hardware::PowerSupplySlot::SlotConfig>("S", Kex::make<SmbusVorn::VornDesc>(vorn_)),
      status_, vorn_->newRequest(), vorn_->newRequest(), vorn_->newRequest(), nullptr, nullptr,
      nullptr, deviceId, kFruCommand);
  identifier->hasNotificationActiveIs(true);
  return identifier;
}

double Rig::now() const { return loop().config().clock()->time(); }

void Rig::run(double until) {
  loop().runUntil(until);
  if (status_) {
    seePublished();
  }
}

void Rig::wrong(Kex::String8 const& what) {
  if (fault_.empty()) {
    fault_ = what.charPtr();
  }
}

void Rig::started(Smbus::Transaction const& transaction) {
  seePublished();
  if (transaction.write.length != 0) {
    return;
  }
  ++detections_;
  seen_ = 0;
  doubts_ = std::min(doubts_ + 1, kConfirming);
}

void Rig::reset() {
  if (isActing_) {
    return;
  }
  if (now() < lastReset_ + kPollInterval - kNoTime) {
    wrong(Kex::format("detection started over %g s after the last time", now() - lastReset_));
  }
  lastReset_ = detectionOf(*identifier_).memory.lastReset;
  if (lastReset_ != now()) {
    wrong("detection started over, and the slot remembers another time");
  }
}

void Rig::seePublished() {
  if (std::exchange(version_, status_->version()) == status_->version() || !status_->supply()) {
    return;
  }
  auto const& told = *status_->supply();
  if (told.verdict != Verdict::identified) {
    if (doubts_ < kConfirming) {
      wrong(Kex::format("'%s' is told after %u detections", verdictName(told.verdict), doubts_));
    }
    return;
  }
  doubts_ = 0;
  for (unsigned supply = 0; supply < kSupplies; ++supply) {
    if ((seen_ >> supply & 1U) != 0 && fdlOf(Supply{supply}) == told.fdl) {
      return;
    }
  }
  wrong(Kex::format("'%s' is told, and was not in the slot", told.fdl.charPtr()));
}

void Rig::check() {
  unsigned underWay = 0;
  for (auto const& request :
       {identifier_->pollForInsertionRequest(), identifier_->identifySupplyRequest(),
        identifier_->checkSupplyRequest()}) {
    underWay += request->isUnderWay() ? 1U : 0U;
  }
  bool const isWaiting = std::isfinite(identifier_->timeMin());
  if (underWay + (isWaiting ? 1U : 0U) != (isOff_ ? 0U : 1U)) {
    wrong(Kex::format("%u requests are under way, and a deadline is %s", underWay,
                      isWaiting ? "set" : "not set"));
  }
  if (underWay != 0 && !isOnWire()) {
    wrong("a request is under way, and no transaction");
  }
  lastReset_ = detectionOf(*identifier_).memory.lastReset;
  if (!fault_.empty()) {
    throw std::runtime_error(fault_);
  }
}

bool Rig::isAsked() const { return isOnWire() && hasClient(*bus_); }

bool Rig::covers(Flip const& flip) const {
  auto const& asked = wire_->pending->transaction;
  if (!flip.address) {
    return asked.write.length == 0;
  }
  return asked.write.length == 2 && *flip.address >= asked.write.bytes[1] &&
         *flip.address < asked.write.bytes[1] + asked.readLength - 1U;
}

bool Rig::endsTheArea() const {
  auto const& asked = wire_->pending->transaction;
  return asked.write.length == 2 && asked.write.bytes[1] + asked.readLength - 1U == kAreaEnd;
}

Smbus::Reply Rig::replyOf(Supply supply) const {
  return answersOf(supply).answer(wire_->pending->transaction);
}

void Rig::answerWith(Smbus::Reply const& reply) {
  unsigned const detection = detections_;
  unsigned const before = hasClient(*bus_) && !isOff_ ? attemptsLeft() : 0;
  std::exchange(wire_->pending, {})->answer(reply);
  run(now());
  if (before != 0 && detection == detections_ && attemptsLeft() >= before) {
    wrong("a transaction was answered, and as many attempts are left as before");
  }
  check();
}

void Rig::answer(Supply supply, std::function<void(Smbus::Reply&)> const& spoil) {
  Smbus::Reply reply = replyOf(supply);
  if (spoil) {
    spoil(reply);
  }
  auto const& area = identifier_->productInfoBuf();
  if (isWaitingFor(PowerSupplyDetector::IdentifierBase::kIdentifySupply) && area) {
    seen_ |= 1U << supply;
  }
  answerWith(reply);
  if (area) {
    seen_ &= suppliesWith(area->bytes());
  }
  interfere_ = {};
}

void Rig::fail(Smbus::ErrorKind kind, double after) {
  Kex::U64 const ticket = wire_->pending->ticket;
  run(now() + after);
  if (isOnWire() && wire_->pending->ticket == ticket) {
    answerWith(Smbus::Reply::failed(kind));
  }
  check();
}

void Rig::answerLate() {
  auto const late = *wire_->pending;
  Smbus::Reply const reply = replyOf(kA);
  wire_->pending.reset();
  while (now() < late.begun + kBusTimeout - kNoTime) {
    run(loop().config().clock()->nextDeadline());
  }
  late.answer(reply);
  run(now());
  check();
}

void Rig::elapse(double part) { pass(part * wait()); }

void Rig::pass(double seconds) {
  double const until = now() + seconds;
  if (isOnWire()) {
    // Nobody waits for it any more; the transport fails it in its time.
    double const timeout = wire_->pending->begun + kTransportTimeout;
    if (timeout <= until) {
      return fail(Smbus::ErrorKind::timeout, timeout - now());
    }
  }
  run(until);
  check();
}

void Rig::elapseIntoThrow() {
  wire_->throwsAtStart = true;
  elapse();
  wire_->throwsAtStart = false;
}

void Rig::act(busTest::Act const& act) {
  // Whoever interferes may make the slot forget what it told.
  doubts_ = kConfirming;
  isActing_ = true;
  act.happen({identifier_, vorn_});
  isActing_ = false;
  run(now());
  check();
}

void Rig::switchIs(busTest::Switch const& one, bool on) {
  doubts_ = kConfirming;
  isOff_ = !on;
  isActing_ = true;
  one.be({identifier_, vorn_}, on);
  isActing_ = false;
  if (on) {
    run(now());
    check();
  }
}

void Rig::replaceInVain() {
  try {
    driver_->identifierIs("EmersonPmbus", newIdentifier(0xFF));
    wrong("an identifier that cannot be initialised took another one's place");
  } catch (Kex::RangeException const&) {
    // The one before goes on.
  }
  run(now());
  check();
}

void Rig::recover(std::optional<Supply> supply) {
  double const time = supply ? kRecovery : kEmptying;
  double const end = now() + time;
  while (now() < end) {
    if (!isOnWire()) {
      elapse();
    } else if (supply) {
      answer(*supply);
    } else {
      fail(Smbus::ErrorKind::noAcknowledge);
    }
  }
  auto const* const told = status_->supply();
  bool const isRight =
      told && (supply ? told->verdict == Verdict::identified && told->fdl == fdlOf(*supply)
                      : told->verdict == Verdict::absent);
  if (!isRight) {
    wrong(Kex::format("%s was in the slot for %g s, and is not told: %s '%s'",
                      supply ? fdlOf(*supply).charPtr() : "nothing", time,
                      told ? verdictName(told->verdict) : "no verdict",
                      told ? told->fdl.charPtr() : ""));
  }
  check();
}

}  // namespace explore
