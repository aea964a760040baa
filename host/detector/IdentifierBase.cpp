// Base of the identifiers: the state machine of one slot.
#include "host/detector/IdentifierBase.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <ostream>

#include "host/detector/AcceptedMakers.h"
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
  } else if (status_) {
    status_->supplyDel(this);
  }
  place_ = std::move(place);
}

void IdentifierBase::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) {
    return;
  }
  Kex::Clock::NotifieeConst::hasNotificationActiveIs(active);
  double const lastReset = detection_.memory.lastReset;
  detection_.memory = {};
  detection_.memory.lastReset = lastReset;
  settleOrStart();
}

void IdentifierBase::kexFwkActivityIs(bool active) {
  isFrameworkActive_ = active;
  settle();
}

void IdentifierBase::kexDoZombieReactors(bool on) {
  if (on == isMarkedForDeletion()) {
    return;
  }
  Kex::Clock::NotifieeConst::kexDoZombieReactors(on);
  withdrawRequests();
  settle();
}

void IdentifierBase::memoryIs(Memory const& memory) {
  double const lastReset = detection_.memory.lastReset;
  detection_.memory = memory;
  detection_.memory.lastReset = lastReset;
}

void IdentifierBase::doPrepare() {
  if (!initialized_ && hasNotificationActive()) {
    Doing const doing(*this);
    doInitialize();
  }
}

void IdentifierBase::doStartDetection() {
  doPrepare();
  if (isStarted_ || !initialized_ || !hasNotificationActive()) {
    return;
  }
  Doing const doing(*this);
  isStarted_ = true;
  if (isAtWork()) {
    detection_.memory.lastReset = now();
    startRequest(kPollForInsertion, pollForInsertionRequest());
  }
}

void IdentifierBase::constructedIs(bool constructed) {
  constructed_ = constructed;
  handleOutsideChange();
}

void IdentifierBase::initializedIs(bool initialized) {
  initialized_ = initialized;
  handleOutsideChange();
}

void IdentifierBase::timeMinIs(double time) {
  Kex::Clock::NotifieeConst::timeMinIs(time);
  handleOutsideChange();
}

void IdentifierBase::intervalIs(double Timings::*interval, char const* name, double seconds) {
  if (!std::isfinite(seconds) || seconds < Timings::kLeast) {
    Kex::throwRangeException(Kex::format("%s of %g: not a finite number of seconds from %g on",
                                         name, seconds, Timings::kLeast));
  }
  timings_.*interval = seconds;
  if (next_ != Next::nothing && next_ != Next::retryCheck) {
    detection_.then.timings = timings_;
    Move const move = after(detection_.ending, detection_.then);
    nextIs(move.next, move.at);
  }
}

void IdentifierBase::pollIntervalIs(double seconds) {
  intervalIs(&Timings::pollInterval, "pollInterval", seconds);
}

void IdentifierBase::pollDelayIs(double seconds) {
  intervalIs(&Timings::pollDelay, "pollDelay", seconds);
}

void IdentifierBase::reviewIntervalIs(double seconds) {
  intervalIs(&Timings::reviewInterval, "reviewInterval", seconds);
}

void IdentifierBase::leastRepetitionIs(double seconds) {
  intervalIs(&Timings::leastRepetition, "leastRepetition", seconds);
}

void IdentifierBase::mostRepetitionIs(double seconds) {
  intervalIs(&Timings::mostRepetition, "mostRepetition", seconds);
}

void IdentifierBase::handleOutsideChange() {
  if (doings_ == 0) {
    settleOrStart();
  }
}

void IdentifierBase::settleOrStart() {
  if (isStarted_) {
    settle();
  } else if (place_.owner() != nullptr) {
    doStartDetection();
  }
}

void IdentifierBase::handleAttached(bool attached) {
  Kex::Clock::NotifieeConst::handleAttached(attached);
  if (attached) {
    // Times of another clock mean nothing to this one.
    detection_.memory.lastReset = now();
    settle();
  } else {
    withdrawRequests();
    next_ = Next::nothing;
  }
}

bool IdentifierBase::isAtWork() const {
  return isStarted_ && constructed_ && initialized_ && notifierPtr() && isRegisteredNotifiee() &&
         status_ && hasNotificationActive() && isFrameworkActive_ && !isMarkedForDeletion();
}

bool IdentifierBase::isAlive() const {
  int const underWay =
      int{poll_.isUnderWay()} + int{identify_.isUnderWay()} + int{check_.isUnderWay()};
  bool const isWaiting = next_ != Next::nothing && std::isfinite(timeMin());
  return underWay + int{isWaiting} == 1;
}

void IdentifierBase::settle() {
  if (!isStarted_) {
    return;
  }
  withdrawRequests();
  nextIs(Next::nothing, 0);
  if (isAtWork()) {
    Move const move = decided({});
    nextIs(move.next, move.at);
  }
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
  PollEnding ending;
  Supply supply;
  if (!present) {
    supply = judgePoll(*pollForInsertionRequest(), findings(), detection_.mfrId);
    ending.outcome = outcomeOf(supply);
  }
  carryOut(ending, [&] {
    if (supply.verdict == Verdict::unsupportedManufacturer) {
      supply.reason = withAcceptedMakers(supply.reason, *this);
    }
    return std::move(supply);
  });
}

void IdentifierBase::doIdentifySupplyRequestComplete(bool identified) {
  IdentifyEnding ending{.outcome = {.verdict = Verdict::unreadable}, .isComplete = identified};
  if (identified) {
    detection_.found = std::make_unique<Supply>(judgeIdentification(findings(), hwError_, fdl_));
    if (detection_.found->verdict == Verdict::identified) {
      detection_.found->descriptor = managingDescriptor();
    }
    detection_.serialNum = serialNum_;
    detection_.isNumbered = hasSerialNumber(serialNum_);
    detection_.areaHeader = areaHeader();
    ending.outcome = outcomeOf(*detection_.found);
  }
  carryOut(ending, [this] {
    return unreadable("reading the product info area", *identifySupplyRequest());
  });
}

void IdentifierBase::doCheckSupplyRequestComplete(bool present) {
  CheckEnding ending{.checked = checked(present),
                     .isFirst = detection_.found != nullptr,
                     .hadFailures = detection_.hadFailures,
                     .hasSerialNumber = detection_.isNumbered,
                     .found = {}};
  if (ending.isFirst) {
    ending.found = outcomeOf(*detection_.found);
  } else if (detection_.memory.told) {
    ending.found = *detection_.memory.told;
  }
  carryOut(ending, [&] {
    return ending.checked == Checked::gone ? unreadable("the first check", *checkSupplyRequest())
                                           : unstable(std::move(*detection_.found), ending.checked);
  });
}

Checked IdentifierBase::checked(bool present) const {
  if (!present) {
    VornRequest const& request = *checkSupplyRequest();
    Smbus::Block const& written = request.transaction().write;
    auto const block = request.received();
    // Some supplies answer with shorter blocks than asked for.
    bool const isCutShort = request.status() == Kex::Request::kSucceeded && block.size() > 1 &&
                            block[0] != 0 && written.length == 2;
    return isCutShort &&
                   isAsRead(written.bytes[1],
                            block.subspan(1, std::min<std::size_t>(block[0], block.size() - 1)))
               ? Checked::same
               : Checked::gone;
  }
  if (serialNum_ != detection_.serialNum) {
    return Checked::otherSerialNumber;
  }
  return areaHeader() == detection_.areaHeader ? Checked::same : Checked::otherAreaHeader;
}

template <class Tell>
void IdentifierBase::carryOut(Ending const& ending, Tell tell) {
  if (isStarted_ && (!isAtWork() || doings_ == 0)) {
    return;
  }
  Move const move = decided(ending);
  switch (move.told) {
    case Told::nothing: break;
    case Told::found: publish(std::move(*std::exchange(detection_.found, nullptr))); break;
    case Told::ending:
    case Told::unstable: publish(tell()); break;
  }
  if (move.next == Next::check && move.at <= detection_.then.now) {
    startRequest(kCheckSupply, checkSupplyRequest());
  } else {
    nextIs(move.next, move.at);
  }
}

Move IdentifierBase::decided(Ending const& ending) {
  Situation& then = detection_.then;
  then.now = now();
  then.timings = timings_;
  then.timings.pollDelay = pollDelay();
  then.memory = detection_.memory;
  detection_.ending = ending;
  Move const move = after(ending, then);
  detection_.memory = move.memory;
  return move;
}

void IdentifierBase::nextIs(Next what, double time) {
  next_ = what;
  Kex::Clock::NotifieeConst::timeMinIs(
      what == Next::nothing ? std::numeric_limits<double>::infinity() : time);
}

void IdentifierBase::withdrawRequests() {
  Doing const doing(*this);
  poll_.withdraw();
  identify_.withdraw();
  check_.withdraw();
}

void IdentifierBase::resetDetection() {
  withdrawRequests();
  nextIs(Next::nothing, 0);
  for (Channel* const channel : {&poll_, &identify_, &check_}) {
    channel->attach();
  }
  Memory& memory = detection_.memory;
  memory.lastReset = now();
  memory.backOff.taken();
  memory.firstCheck.reset();
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
  detection_.hadFailures = false;
  stateIs(state);
  request->activeIs(true);
}

void IdentifierBase::publish(Supply supply) {
  supply.transactions = startedTransactions() - detection_.countedTransactions;
  detection_.isConcluded = true;
  if (!supply.mfrId) {
    supply.mfrId = detection_.mfrId;
  }
  status_->supplyIs(std::move(supply), this);
}

void IdentifierBase::abandon(Kex::String8 const& why) {
  withdrawRequests();
  nextIs(Next::nothing, 0);
  detection_.found.reset();
  // Without a clock there is no later: detection stands still until there is one.
  if (isAtWork()) {
    carryOut(IdentifyEnding{.outcome = {.verdict = Verdict::unreadable}}, [&why] {
      Supply supply;
      supply.verdict = Verdict::unreadable;
      supply.reason = why;
      return supply;
    });
  }
}

void IdentifierBase::guarded(Work work) {
  Kex::Ptr<IdentifierBase> const self(this);
  Doing const doing(*this);
  // One slot's trouble must not end the loop that serves the others.
  try {
    (this->*work)();
    takeRetry();
  } catch (Kex::Exception const& error) {
    abandon(Kex::format("%s exception: %s", error.kind(), error.what()));
  } catch (std::exception const& error) {
    abandon(Kex::format("exception: %s", error.what()));
  } catch (...) {
    abandon("unknown exception");
  }
  if (isAtWork() && !isAlive()) {
    settle();
  }
}

Kex::U64 IdentifierBase::startedTransactions() const {
  return poll_.started() + identify_.started() + check_.started();
}

void IdentifierBase::requestIs(Channel& channel, RequestPtr const& request) {
  channel.requestIs(request);
  handleOutsideChange();
}

void IdentifierBase::takeRetry() {
  // The one deadline that a handler sets itself: its check failed, and is to be run again.
  if (next_ == Next::nothing && std::isfinite(timeMin())) {
    next_ = Next::retryCheck;
  }
}

void IdentifierBase::Channel::requestIs(RequestPtr const& request) {
  Doing const doing(owner_);
  if (this->request()) {
    withdraw();
    this->request()->handlerIs(nullptr);
  }
  request_.ptrIs(request);
  attach();
}

void IdentifierBase::Channel::attach() {
  if (request()) {
    request()->nameIs(name_);
    request()->handlerIs(this);
  }
}

void IdentifierBase::Channel::withdraw() {
  if (request()) {
    Doing const doing(owner_);
    request()->activeIs(false);
  }
}

bool IdentifierBase::Channel::isOwnDoing(VornRequest&) {
  if (owner_.doings_ != 0 || !owner_.isStarted_) {
    return true;
  }
  owner_.settle();
  return false;
}

void IdentifierBase::Channel::handleStatus(VornRequest& request) {
  if (owner_.isStarted_ ? !owner_.isAtWork() : !owner_.hasNotificationActive()) {
    return;
  }
  if (&request == owner_.pollForInsertionRequest().ptr() && isLoneRead(request) &&
      request.status() == Kex::Request::kSucceeded) {
    owner_.detection_.mfrId = blockText(request.received());
  }
  owner_.detection_.hadFailures |= request.status() == Kex::Request::kFailed;
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
