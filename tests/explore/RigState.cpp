// What of a slot decides its future: what tells one state from another.
#include <algorithm>
#include <cmath>

#include "tests/explore/Digest.h"
#include "tests/explore/Inside.h"
#include "tests/explore/Rig.h"

namespace explore {

using Hardware::VornRequest;
using Hardware::PowerSupplySlot::Verdict;
using PowerSupplyDetector::IdentifierBase;
using PowerSupplyDetector::Next;

bool Rig::isWaitingFor(IdentifierBase::IdentifierState state) const {
  return identifier_->state() == state && nextOf(*identifier_) != Next::reset;
}

bool Rig::isReading() const {
  return isWaitingFor(IdentifierBase::kPollForInsertion) ||
         isWaitingFor(IdentifierBase::kIdentifySupply) ||
         (isWaitingFor(IdentifierBase::kCheckSupply) && detectionOf(*identifier_).found);
}

unsigned Rig::attemptsLeft() const {
  constexpr unsigned kAttempts = Emerson::PmbusIdentifier::Identifier::kAttempts;
  constexpr unsigned kAStep = kAttempts * kAttempts;
  constexpr unsigned kLongestArea = 256;
  auto const& area = identifier_->productInfoBuf();
  unsigned const ofStep = (kAttempts - emptyChunksOf(*identifier_)) * kAttempts;
  unsigned const failures = identifier_->failCount();
  switch (identifier_->state()) {
    case IdentifierBase::kPollForInsertion:
      return identifier_->pollForInsertionRequest()->isUnderWay()
                 ? kAStep * (kLongestArea + (identifier_->mfrId().empty() ? 2 : 1))
                 : 0;
    case IdentifierBase::kIdentifySupply:
      if (!identifier_->identifySupplyRequest()->isUnderWay()) {
        return 0;
      }
      return area ? kAStep * (kLongestArea - area->len() - 2) + ofStep - failures
                  : kAStep * (kLongestArea - 1) - failures;
    case IdentifierBase::kCheckSupply:
      return nextOf(*identifier_) == Next::check || nextOf(*identifier_) == Next::reset
                 ? 0
                 : kAttempts - failures;
    default: return 0;
  }
}

namespace {

using Emerson::PmbusIdentifier::Identifier;

/// What a remembered outcome may still decide. Those that only a poll comes to are alike: all that
/// counts is whether the same comes again, and what is told and what is to be confirmed are never
/// the same. That nothing is there makes a difference only where it is told.
std::uint64_t kindOf(std::optional<PowerSupplyDetector::Outcome> const& outcome, bool isTold) {
  if (!outcome) {
    return ~std::uint64_t{0};
  }
  bool const isOfAPoll = outcome->verdict == Verdict::unreachable ||
                         outcome->verdict == Verdict::unsupportedManufacturer ||
                         outcome->verdict == Verdict::invalidHeader ||
                         (outcome->verdict == Verdict::absent && !isTold);
  return static_cast<std::uint64_t>(isOfAPoll ? Verdict::unreachable : outcome->verdict);
}

void addRequest(Digest& digest, VornRequest const& request) {
  Smbus::Transaction const& transaction = request.transaction();
  digest.add(request.isUnderWay()).add(request.status());
  digest.add(static_cast<std::uint64_t>(request.loaded())).add(transaction.address.encoded());
  digest.add(transaction.write.view()).add(transaction.readLength);
}

/// Whether buffers and records serve; those that do not are put right at the next detection.
void addBuffers(Digest& digest, Identifier const& identifier) {
  for (auto const& buffer :
       {identifier.pollForInsertionWriteBuf(), identifier.identifySupplyWriteBuf(),
        identifier.checkSupplyWriteBuf(), identifier.pollForInsertionReadBuf(),
        identifier.identifySupplyReadBuf(), identifier.checkSupplyReadBuf()}) {
    digest.add(buffer ? std::min<Kex::U32>(buffer->size(), 2) : 0);
  }
}

/// Which of the records of an identification there are, also where nobody looks at them before
/// detection starts over: what is done by name meets them.
void addRecords(Digest& digest, Identifier const& identifier) {
  auto const& idprom = identifier.idprom();
  digest.add(bool(identifier.commonAreaBuf())).add(bool(identifier.productInfoHeaderBuf()));
  digest.add(bool(identifier.productInfoBuf())).add(bool(idprom)).add(idprom && idprom->header());
}

void addPoll(Digest& digest, Identifier const& identifier) {
  digest.addText(identifier.mfrId());
  addRequest(digest, *identifier.pollForInsertionRequest());
}

void addIdentification(Digest& digest, Identifier const& identifier) {
  auto const& request = *identifier.identifySupplyRequest();
  digest.add(request.isUnderWay()).add(request.status());
  digest.add(identifier.idprom()->header()->productAreaOffset());
  digest.add(identifier.failCount()).add(emptyChunksOf(identifier));
  auto const& area = identifier.productInfoBuf();
  digest.add(bool(area));
  if (area) {
    // Of bytes that no supply has all that counts is how many are left; between two answers that
    // bring no byte some are as many as few.
    constexpr unsigned kFew = 2;
    unsigned const left = area->size() - area->len();
    bool const isHalting = identifier.failCount() != 0 || emptyChunksOf(identifier) != 0;
    digest.add(suppliesWith(area->bytes())).add(isHalting ? std::min(left, kFew) : left);
  }
}

void addCheck(Digest& digest, Identifier const& identifier, double at) {
  auto const& detection = detectionOf(identifier);
  addRequest(digest, *identifier.checkSupplyRequest());
  digest.add(identifier.failCount()).add(detection.hadFailures);
  if (!detection.hadFailures) {
    // After a failure detection starts over, whenever it was due.
    double const sinceFirst = detection.memory.firstCheck ? at - *detection.memory.firstCheck : -1;
    digest.addTime(std::max(0.0, detection.memory.backOff.due() - at))
        .addTime(std::min(kReviewInterval, sinceFirst));
  }
  digest.addText(detection.serialNum);
  digest.addText(detection.areaHeader);
  digest.add(detection.found != nullptr);
  if (detection.found) {
    digest.add(static_cast<std::uint64_t>(detection.found->verdict));
    digest.addText(detection.found->fdl);
  }
}

}  // namespace

std::uint64_t Rig::digest() const {
  auto const& identifier = *identifier_;
  auto const& memory = detectionOf(identifier).memory;
  Digest digest;
  digest.add(identifier.state()).add(static_cast<std::uint64_t>(nextOf(identifier)));
  digest.addTime(wait()).addTime(std::min(kPollInterval, now() - memory.lastReset));
  digest.add(memory.mismatches).addTime(memory.backOff.interval());
  digest.add(doubts_);
  digest.add(kindOf(memory.told, true)).add(kindOf(memory.unconfirmed, false));
  // Of what is told only the supply, or that there is none, makes a difference.
  auto const* const told = status_->supply();
  digest.add(told != nullptr && told->verdict == Verdict::absent);
  digest.addText(told != nullptr ? told->fdl : Kex::String8());
  digest.add(isOnWire()).add(isAsked());
  digest.addTime(isOnWire() ? now() - wire_->pending->begun : -1);
  addBuffers(digest, identifier);
  addRecords(digest, identifier);

  // The rest only as long as somebody may still look at it.
  if (isWaitingFor(IdentifierBase::kPollForInsertion)) {
    addPoll(digest, identifier);
  }
  if (isWaitingFor(IdentifierBase::kIdentifySupply) || nextOf(identifier) == Next::identify) {
    addIdentification(digest, identifier);
  }
  if (isWaitingFor(IdentifierBase::kCheckSupply)) {
    addCheck(digest, identifier, now());
  }
  return digest.value();
}

}  // namespace explore
