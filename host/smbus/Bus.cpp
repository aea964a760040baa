// Smbus::Bus, the queue of one bus.
#include "host/smbus/Bus.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "host/kex/time/ActivityManager.h"
#include "host/kex/type/KexType.h"

namespace Smbus {

Kex::KexType& Bus::_fwkType() {
  static Kex::KexType& record = Kex::newHostType<Bus>("Smbus::Bus", &PtrInterface::_fwkType());
  return record;
}

namespace {

/// What a transport may take longer than the address's bus timeout, in seconds: it fails at the
/// timeout itself, and knows better why.
constexpr double kGrace = 0.05;

}  // namespace

/// Wakes the bus when a transport does not answer.
class Bus::Deadline final : public Kex::Clock::NotifieeConst {
 public:
  explicit Deadline(Bus& bus) : NotifieeConst(Kex::activityManager().config().clock()), bus_(bus) {}

  using NotifieeConst::now;

 private:
  void onTime() override { bus_.handleDeadline(); }

  Bus& bus_;
};

Bus::Bus(std::unique_ptr<Transport> transport)
    : transport_(std::move(transport)), deadline_(Kex::make<Deadline>(*this)) {}

Kex::KexType& Bus::fwkType() const { return _fwkType(); }

Bus::~Bus() { deadline_->isRegisteredNotifieeIs(false); }

void Bus::clientQEnq(Client& client) {
  if (isBusy_) {
    waiting_.push_back(&client);
  } else {
    start(client);
  }
}

void Bus::clientDel(Client& client) {
  std::erase(waiting_, &client);
  if (current_ == &client) {
    current_ = nullptr;
  }
}

void Bus::start(Client& client) {
  current_ = &client;
  transaction_ = client.transaction();
  isBusy_ = true;
  client.handleStarted();
  due_ = deadline_->now() + transaction_.address.busTimeout() / 1e3 + kGrace;
  // Set once for many transactions: whichever is under way then waits on.
  if (deadline_->timeMin() > due_) {
    deadline_->timeMinIs(due_);
  }
  ++ticket_;
  try {
    transport_->start(transaction_, ticket_, *this);
  } catch (std::exception const& error) {
    answerIs(ticket_, Reply::failed(ErrorKind::other, Kex::String8(error.what())));
  } catch (...) {
    answerIs(ticket_, Reply::failed(ErrorKind::other, "the transport threw an exception"));
  }
}

void Bus::handleDeadline() {
  if (!isBusy_) {
    return;
  }
  if (deadline_->now() < due_) {
    deadline_->timeMinIs(due_);
    return;
  }
  answerIs(ticket_, Reply::failed(ErrorKind::timeout,
                                  "the transport did not answer within the bus timeout"));
}

void Bus::answerIs(Kex::U64 ticket, Reply const& reply) {
  if (!isBusy_ || ticket != ticket_) {
    return;
  }
  isBusy_ = false;
  if (Client* const client = std::exchange(current_, nullptr); client != nullptr) {
    client->handleReply(reply);
    if (observer_ != nullptr) {
      observer_->handleTransaction(*client, transaction_, reply);
    }
  }
  if (!isBusy_ && !waiting_.empty()) {
    Client& next = *waiting_.front();
    waiting_.erase(waiting_.begin());
    start(next);
  }
}

}  // namespace Smbus
