// Base of the identifiers: the state machine of one slot.
#include "host/detector/IdentifierBase.h"

#include <cmath>
#include <ostream>

#include "host/kex/base/Exception.h"
#include "host/kex/base/Format.h"

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
      poll_(*this, "pollForInsertion", "pollForInsertionRequest",
            &IdentifierBase::handlePollForInsertionRequest),
      identify_(*this, "identifySupply", "identifySupplyRequest",
                &IdentifierBase::handleIdentifySupplyRequest),
      check_(*this, "checkSupply", "checkSupplyRequest", &IdentifierBase::handleCheckSupplyRequest),
      presentIntCtrl_(presentIntCtrl),
      presentIntFd_(presentIntFd),
      presentGpo_(presentGpo) {
  Kex::Clock::NotifieeConst::hasNotificationActiveIs(false);
  poll_.requestIs(pollForInsertionRequest);
  identify_.requestIs(identifySupplyRequest);
  check_.requestIs(checkSupplyRequest);
}

IdentifierBase::~IdentifierBase() { withdrawRequests(); }

void IdentifierBase::placeIs(Kex::Place place) {
  if (place.owner() != nullptr) {
    static_cast<void>(*notifier());
    static_cast<void>(*status_);
  }
  place_ = std::move(place);
}

void IdentifierBase::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) {
    return;
  }
  Kex::Clock::NotifieeConst::hasNotificationActiveIs(active);
  if (!active) {
    withdrawRequests();
    nextIs(Next::nothing, 0);
  } else if (isStarted_) {
    resetDetection();
  } else if (place_.owner() != nullptr) {
    doStartDetection();
  }
}

void IdentifierBase::kexFwkActivityIs(bool active) {
  if (!active) {
    withdrawRequests();
    nextIs(Next::nothing, 0);
  } else if (isStarted_ && hasNotificationActive()) {
    resetDetection();
  }
}

void IdentifierBase::kexDoZombieReactors(bool on) {
  if (on) {
    withdrawRequests();
    nextIs(Next::nothing, 0);
  }
  Kex::Clock::NotifieeConst::kexDoZombieReactors(on);
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
  detection_.memory.lastReset = now();
  startRequest(kPollForInsertion, pollForInsertionRequest());
}

void IdentifierBase::onTime() { guarded(&IdentifierBase::handleDeadline); }

void IdentifierBase::handleDeadline() {
  switch (std::exchange(next_, Next::nothing)) {
    case Next::nothing: return;
    case Next::reset: return resetDetection();
    case Next::identify: return startRequest(kIdentifySupply, identifySupplyRequest());
    case Next::check: return startRequest(kCheckSupply, checkSupplyRequest());
    case Next::retryCheck: return checkSupplyRequest()->activeIs(true);
  }
}

void IdentifierBase::doPollForInsertionRequestComplete(bool present) {
  carryOut(afterPoll(present, situation()),
           [this] { return judgePoll(*pollForInsertionRequest(), findings(), detection_.mfrId); });
}

void IdentifierBase::doIdentifySupplyRequestComplete(bool identified) {
  std::optional<Verdict> verdict;
  if (identified) {
    detection_.found = std::make_unique<Supply>(judgeIdentification(findings(), hwError_, fdl_));
    verdict = detection_.found->verdict;
    if (verdict == Verdict::identified) {
      detection_.found->descriptor = managingDescriptor();
    }
    detection_.serialNum = serialNum_;
    detection_.areaHeader = areaHeader();
  }
  carryOut(afterIdentify(verdict, situation()), [this] {
    return unreadable("reading the product info area", *identifySupplyRequest());
  });
}

void IdentifierBase::doCheckSupplyRequestComplete(bool present) {
  Checked const checked = !present                                ? Checked::gone
                          : serialNum_ != detection_.serialNum    ? Checked::otherSerialNumber
                          : areaHeader() != detection_.areaHeader ? Checked::otherAreaHeader
                                                                  : Checked::same;
  carryOut(afterCheck(checked, detection_.found != nullptr, situation()), [&] {
    return present ? unstable(std::move(*detection_.found), checked)
                   : unreadable("the first check", *checkSupplyRequest());
  });
}

template <class Ending>
void IdentifierBase::carryOut(Move const& move, Ending ending) {
  detection_.memory = move.memory;
  switch (move.told) {
    case Told::nothing: break;
    case Told::found: publish(std::move(*std::exchange(detection_.found, nullptr))); break;
    case Told::ending:
    case Told::unstable: publish(ending()); break;
  }
  if (move.next == Next::check && move.at <= now()) {
    startRequest(kCheckSupply, checkSupplyRequest());
  } else {
    nextIs(move.next, move.at);
  }
}

Situation IdentifierBase::situation() const {
  return {.now = now(),
          .timings = {.pollInterval = pollInterval_, .pollDelay = pollDelay()},
          .memory = detection_.memory};
}

double IdentifierBase::now() const { return notifier()->time(); }

void IdentifierBase::nextIs(Next what, double time) {
  next_ = what;
  timeMinIs(what == Next::nothing ? std::numeric_limits<double>::infinity() : time);
}

void IdentifierBase::withdrawRequests() {
  poll_.withdraw();
  identify_.withdraw();
  check_.withdraw();
}

void IdentifierBase::resetDetection() {
  withdrawRequests();
  nextIs(Next::nothing, 0);
  detection_.memory.lastReset = now();
  detection_.memory.backOff.taken();
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
  nextIs(Next::nothing, 0);
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
    nextIs(Next::reset, now() + pollInterval_);
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

void IdentifierBase::handleRetry() {
  // The one deadline that a handler sets itself: its check failed, and is to be run again.
  if (next_ == Next::nothing && std::isfinite(timeMin())) {
    next_ = Next::retryCheck;
  }
}

void IdentifierBase::Channel::requestIs(RequestPtr const& request) {
  if (this->request()) {
    withdraw();
    this->request()->handlerIs(nullptr);
  }
  request_.ptrIs(request);
  if (request) {
    request->nameIs(name_);
    request->handlerIs(this);
  }
}

void IdentifierBase::Channel::withdraw() {
  if (request()) {
    request()->activeIs(false);
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
  owner_.handleRetry();
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
