// A bus with room for one simulated supply.
#include "agent/transport/SimulatedBus.h"

#include <utility>

namespace Agent {

using Smbus::ErrorKind;
using Smbus::Reply;

SimulatedBus::SimulatedBus(std::optional<SimulatedSupply> const& supply)
    : supply_(supply), timer_([this] { finish(); }) {}

void SimulatedBus::supplyIs(std::optional<SimulatedSupply> const& supply) {
  bool const hasLeft = supply_.has_value();
  supply_ = supply;
  if (hasLeft && sink_ != nullptr) {
    reply_ = Reply::failed(ErrorKind::noAcknowledge);
    timer_.startIn(0);
  }
}

void SimulatedBus::start(Smbus::Transaction const& transaction, Kex::U64 ticket,
                         Smbus::AnswerSink& sink) {
  bool const isPresent = supply_ && SimulatedSupply::isPresentAt(transaction.address);
  reply_ = supply_ ? supply_->answer(transaction) : Reply::failed(ErrorKind::noAcknowledge);
  ticket_ = ticket;
  sink_ = &sink;
  timer_.startIn(wireTime(transaction, reply_, isPresent));
}

void SimulatedBus::finish() {
  std::exchange(sink_, nullptr)->answerIs(ticket_, std::exchange(reply_, {}));
}

double wireTime(Smbus::Transaction const& transaction, Smbus::Reply const& reply, bool isPresent) {
  constexpr double kSecondsPerBit = 10e-6;
  unsigned const written = isPresent ? 2 : 1;
  if (!reply.isOk) {
    return (9 * written + 2) * kSecondsPerBit;
  }
  unsigned const bytes = written + transaction.write.length + 1U + reply.read.length;
  return (9 * bytes + 3) * kSecondsPerBit;
}

}  // namespace Agent
