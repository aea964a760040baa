// Base of the identifiers: the state machine of one slot.
#include "host/detector/IdentifierBase.h"

#include <algorithm>
#include <ostream>

#include "host/kex/base/Exception.h"
#include "host/kex/base/Format.h"
#include "host/kex/entity/Directory.h"

namespace PowerSupplyDetector {

using Hardware::VornRequest;

IdentifierBase::IdentifierBase(Kex::Ptr<Kex::Clock const> const& clock, SlotConfigPtr const& config,
                               SlotStatusPtr const& status,
                               RequestPtr const& pollForInsertionRequest,
                               RequestPtr const& identifySupplyRequest,
                               RequestPtr const& checkSupplyRequest,
                               Kex::Ptr<Fru::IntCtrl> const& presentIntCtrl,
                               Kex::Ptr<Kex::FileDescriptor const> const& presentIntFd,
                               Kex::Ptr<Fru::Gpo> const& presentGpo)
    : clockInput_(clock),
      config_(config),
      status_(status),
      poll_(*this, "pollForInsertion", &IdentifierBase::handlePollForInsertionRequest),
      identify_(*this, "identifySupply", &IdentifierBase::handleIdentifySupplyRequest),
      check_(*this, "checkSupply", &IdentifierBase::handleCheckSupplyRequest),
      presentIntCtrl_(presentIntCtrl),
      presentIntFd_(presentIntFd),
      presentGpo_(presentGpo) {
  Kex::Clock::NotifieeConst::hasNotificationActiveIs(false);
  poll_.requestIs(pollForInsertionRequest);
  identify_.requestIs(identifySupplyRequest);
  check_.requestIs(checkSupplyRequest);
}

IdentifierBase::~IdentifierBase() { withdrawRequests(); }

Kex::String8 IdentifierBase::path() const {
  return owner_ == nullptr ? Kex::String8() : Kex::memberPath(*owner_, Kex::Name(identifierName_));
}

void IdentifierBase::ownerIs(Kex::Entity const* owner) {
  if (owner != nullptr) {
    static_cast<void>(*notifier());
    static_cast<void>(*status_);
  }
  owner_ = owner;
}

void IdentifierBase::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) {
    return;
  }
  Kex::Clock::NotifieeConst::hasNotificationActiveIs(active);
  if (!active) {
    withdrawRequests();
    pendingActionIs(PendingAction::none, 0);
  } else if (isStarted_) {
    resetDetection();
  } else if (owner_ != nullptr) {
    doStartDetection();
  }
}

void IdentifierBase::kexFwkActivityIs(bool active) {
  if (!active) {
    withdrawRequests();
    pendingActionIs(PendingAction::none, 0);
  } else if (isStarted_ && hasNotificationActive()) {
    resetDetection();
  }
}

void IdentifierBase::kexDoZombieReactors(bool on) {
  if (on) {
    withdrawRequests();
    pendingActionIs(PendingAction::none, 0);
  }
}

void IdentifierBase::doStartDetection() {
  if (isStarted_ || !hasNotificationActive()) {
    return;
  }
  doInitialize();
  if (!initialized_) {
    return;
  }
  isStarted_ = true;
  detection_.lastReset = now();
  startRequest(kPollForInsertion, pollForInsertionRequest());
}

void IdentifierBase::onTime() { guarded(&IdentifierBase::handleDeadline); }

void IdentifierBase::handleDeadline() {
  switch (std::exchange(pendingAction_, PendingAction::none)) {
    case PendingAction::none:
      // While a check runs nobody but its handler sets a deadline: that of the retry.
      if (state_ == kCheckSupply) {
        checkSupplyRequest()->activeIs(true);
      }
      return;
    case PendingAction::reset: return resetDetection();
    case PendingAction::identify: return startRequest(kIdentifySupply, identifySupplyRequest());
    case PendingAction::check:
      if (detection_.backOff.due() <= now()) {
        return resetDetection();
      }
      return startRequest(kCheckSupply, checkSupplyRequest());
  }
}

void IdentifierBase::doPollForInsertionRequestComplete(bool present) {
  if (present) {
    return pendingActionIs(PendingAction::identify, now() + pollDelay());
  }
  detection_.backOff.clear();
  detection_.mismatches = 0;
  publish(judgePoll(*pollForInsertionRequest(), findings(), detection_.mfrId));
  pendingActionIs(PendingAction::reset, now() + pollInterval_);
}

void IdentifierBase::doIdentifySupplyRequestComplete(bool identified) {
  if (!identified) {
    detection_.backOff.clear();
    publish(unreadable("reading the product info area", *identifySupplyRequest()));
    return pendingActionIs(PendingAction::reset, now() + pollInterval_);
  }
  Supply found = judgeIdentification(findings(), hwError_, fdl_);
  if (found.verdict == Verdict::identified) {
    found.descriptor = managingDescriptor();
  }
  detection_.serialNum = serialNum_;
  detection_.areaHeader = areaHeader();
  if (found.verdict == Verdict::invalidChecksum || found.verdict == Verdict::unsupportedVersion) {
    detection_.backOff.schedule(now());
  } else {
    detection_.backOff.clear();
  }
  detection_.found = std::make_unique<Supply>(std::move(found));
  startRequest(kCheckSupply, checkSupplyRequest());
}

void IdentifierBase::doCheckSupplyRequestComplete(bool present) {
  if (!present) {
    detection_.backOff.clear();
    detection_.mismatches = 0;
    if (detection_.found) {
      publish(unreadable("the first check", *checkSupplyRequest()));
    }
    return pendingActionIs(PendingAction::reset, now() + pollInterval_);
  }
  bool const isOtherSerial = serialNum_ != detection_.serialNum;
  if (isOtherSerial || areaHeader() != detection_.areaHeader) {
    detection_.backOff.clear();
    if (++detection_.mismatches >= 2 && detection_.found) {
      Supply supply = std::move(*detection_.found);
      supply.verdict = Verdict::unreadable;
      supply.reason = isOtherSerial ? "serial number is not stable"
                                    : "the product info area's header is not stable";
      supply.descriptor.reset();
      supply.fdl = {};
      publish(std::move(supply));
    }
    return pendingActionIs(PendingAction::reset,
                           std::max(now(), detection_.lastReset + pollInterval_));
  }
  detection_.mismatches = 0;
  if (auto const found = std::move(detection_.found)) {
    publish(std::move(*found));
  }
  pendingActionIs(PendingAction::check, std::min(now() + pollInterval_, detection_.backOff.due()));
}

double IdentifierBase::now() const { return notifier()->time(); }

void IdentifierBase::pendingActionIs(PendingAction action, double time) {
  pendingAction_ = action;
  timeMinIs(action == PendingAction::none ? std::numeric_limits<double>::infinity() : time);
}

void IdentifierBase::withdrawRequests() {
  poll_.withdraw();
  identify_.withdraw();
  check_.withdraw();
}

void IdentifierBase::resetDetection() {
  withdrawRequests();
  pendingActionIs(PendingAction::none, 0);
  detection_.lastReset = now();
  detection_.backOff.taken();
  if (std::exchange(detection_.isConcluded, false)) {
    detection_.countedTransactions = startedTransactions();
  }
  detection_.mfrId.reset();
  detection_.found.reset();
  fdlIs("");
  serialNumIs("");
  hwErrorIs(false);
  doForgetSupply();
  stateIs(kPollForInsertion);
  doResetIdentifier();
}

void IdentifierBase::startRequest(IdentifierState state, RequestPtr const& request) {
  pendingActionIs(PendingAction::none, 0);
  stateIs(state);
  request->activeIs(true);
}

void IdentifierBase::publish(Supply supply) {
  supply.transactions = startedTransactions() - detection_.countedTransactions;
  detection_.isConcluded = true;
  if (!supply.mfrId) {
    supply.mfrId = detection_.mfrId;
  }
  status_->supplyIs(std::move(supply));
}

void IdentifierBase::abandon(Kex::Exception const& why) {
  withdrawRequests();
  Supply supply;
  supply.verdict = Verdict::unreadable;
  supply.reason = Kex::format("%s exception: %s", why.kind(), why.what());
  publish(std::move(supply));
  // Without a clock there is no later: detection stands still until there is one.
  if (notifier()) {
    pendingActionIs(PendingAction::reset, now() + pollInterval_);
  }
}

void IdentifierBase::guarded(Work work) {
  Kex::Ptr<IdentifierBase> const self(this);
  try {
    (this->*work)();
  } catch (Kex::Exception const& why) {
    // One slot's trouble must not end the loop that serves the others.
    abandon(why);
  }
}

Kex::U64 IdentifierBase::startedTransactions() const {
  return poll_.started() + identify_.started() + check_.started();
}

void IdentifierBase::Channel::requestIs(RequestPtr const& request) {
  if (request_) {
    withdraw();
    request_->handlerIs(nullptr);
  }
  request_ = request;
  if (request_) {
    request_->nameIs(name_);
    request_->handlerIs(this);
  }
}

void IdentifierBase::Channel::withdraw() {
  if (request_) {
    request_->activeIs(false);
  }
}

void IdentifierBase::Channel::handleStatus(VornRequest& request) {
  if (!owner_.hasNotificationActive()) {
    return;
  }
  if (&request == owner_.pollForInsertionRequest().ptr() && isLoneRead(request) &&
      request.status() == Kex::Request::kSucceeded) {
    owner_.detection_.mfrId = blockText(request.received());
  }
  owner_.guarded(handle_);
}

std::ostream& operator<<(std::ostream& out, IdentifierBase::IdentifierState state) {
  switch (state) {
    case IdentifierBase::kInitial: return out << "initial";
    case IdentifierBase::kConstructed: return out << "constructed";
    case IdentifierBase::kPollForInsertion: return out << "pollForInsertion";
    case IdentifierBase::kIdentifySupply: return out << "identifySupply";
    case IdentifierBase::kCheckSupply: return out << "checkSupply";
  }
  return out << static_cast<unsigned>(state);
}

}  // namespace PowerSupplyDetector
