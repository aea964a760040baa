// Smbus::Bus, the queue of one bus.
#include "host/smbus/Bus.h"

#include <algorithm>
#include <utility>

#include "host/kex/type/KexType.h"

namespace Smbus {

Kex::KexType& Bus::_fwkType() {
  static Kex::KexType& record = Kex::newHostType<Bus>("Smbus::Bus", &PtrInterface::_fwkType());
  return record;
}

Bus::Bus(std::unique_ptr<Transport> transport) : transport_(std::move(transport)) {}

Kex::KexType& Bus::fwkType() const { return _fwkType(); }

Bus::~Bus() = default;

void Bus::clientQEnq(Client& client) {
  waiting_.push_back(&client);
  startNext();
}

void Bus::clientDel(Client& client) {
  std::erase(waiting_, &client);
  if (current_ == &client) {
    current_ = nullptr;
  }
}

void Bus::startNext() {
  if (isBusy_ || waiting_.empty()) {
    return;
  }
  current_ = waiting_.front();
  waiting_.erase(waiting_.begin());
  transaction_ = current_->transaction();
  isBusy_ = true;
  current_->handleStarted();
  transport_->start(transaction_, ++ticket_, *this);
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
  startNext();
}

}  // namespace Smbus
