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

std::uint64_t Rig::digest() const {
  auto const& identifier = *identifier_;
  auto const& detection = detectionOf(identifier);
  double const at = now();
  Digest digest;
  auto const addText = [&digest](Kex::String8 const& text) {
    digest.add(std::span(reinterpret_cast<Kex::U8 const*>(text.charPtr()), text.len()));
  };
  auto const addOutcome = [&digest](PowerSupplyDetector::Outcome const& outcome) {
    digest.add(static_cast<std::uint64_t>(outcome.verdict)).add(outcome.texts);
  };
  auto const addRequest = [&](VornRequest const& request) {
    digest.add(request.isUnderWay()).add(request.status());
    Smbus::Transaction const& transaction = request.transaction();
    digest.add(static_cast<std::uint64_t>(request.loaded())).add(transaction.address.encoded());
    digest.add(transaction.write.view()).add(transaction.readLength);
  };

  // What is always alive.
  digest.add(identifier.state())
      .add(static_cast<std::uint64_t>(nextOf(identifier)))
      .addTime(wait())
      .addTime(std::min(kPollInterval, at - detection.memory.lastReset))
      .add(detection.memory.mismatches)
      .add(doubts_);
  digest.addTime(detection.memory.backOff.interval());
  for (auto const& outcome : {detection.memory.told, detection.memory.unconfirmed}) {
    digest.add(outcome.has_value());
    if (outcome) {
      addOutcome(*outcome);
    }
  }
  // Of what is told only the supply, or that there is none, makes a difference.
  if (auto const* told = status_->supply()) {
    digest.add(told->verdict == Verdict::absent);
    addText(told->fdl);
  } else {
    digest.add(false);
    addText({});
  }
  digest.add(isOnWire()).add(hasClient(*bus_));
  if (isOnWire()) {
    digest.addTime(at - wire_->pending->begun);
  }

  // Whether the buffers serve; those that do not are put right at the next detection.
  for (auto const& buffer :
       {identifier.pollForInsertionWriteBuf(), identifier.identifySupplyWriteBuf(),
        identifier.checkSupplyWriteBuf(), identifier.pollForInsertionReadBuf(),
        identifier.identifySupplyReadBuf(), identifier.checkSupplyReadBuf()}) {
    digest.add(buffer ? std::min<Kex::U32>(buffer->size(), 2) : 0);
  }

  // The rest only as long as somebody may still look at it.
  if (isWaitingFor(IdentifierBase::kPollForInsertion)) {
    addText(identifier.mfrId());
    addRequest(*identifier.pollForInsertionRequest());
  }
  if (isWaitingFor(IdentifierBase::kIdentifySupply) || nextOf(identifier) == Next::identify) {
    addRequest(*identifier.identifySupplyRequest());
    digest.add(identifier.idprom()->header()->productAreaOffset());
    digest.add(identifier.failCount())
        .add(emptyChunksOf(identifier))
        .add(bool(identifier.productInfoBuf()));
    if (identifier.productInfoBuf()) {
      digest.add(identifier.productInfoHeaderBuf()->bytes());
      digest.add(identifier.productInfoBuf()->bytes());
    }
  }
  if (isWaitingFor(IdentifierBase::kCheckSupply)) {
    addRequest(*identifier.checkSupplyRequest());
    digest.add(identifier.failCount())
        .add(detection.hadFailures)
        .addTime(std::max(0.0, detection.memory.backOff.due() - at))
        .addTime(detection.memory.firstCheck ? at - *detection.memory.firstCheck : HUGE_VAL);
    addText(detection.serialNum);
    addText(detection.areaHeader);
    digest.add(detection.found != nullptr);
    if (detection.found) {
      digest.add(static_cast<std::uint64_t>(detection.found->verdict));
      addText(detection.found->fdl);
      if (auto const& product = detection.found->product) {
        addText(product->partNumber());
        addText(product->serialNumber());
      }
    }
  }
  return digest.value();
}

}  // namespace explore
