// The fault wrapper: any transport, made to misbehave.
#include "agent/transport/FaultTransport.h"

#include <algorithm>
#include <utility>

namespace Agent {

FaultTransport::FaultTransport(std::unique_ptr<Smbus::Transport> inner)
    : inner_(std::move(inner)),
      failureTimer_([this] { sink_->answerIs(ticket_, failure_); }),
      lateTimer_([this] { giveLateAnswer(); }) {}

void FaultTransport::randomIs(Kex::U64 startValue, double rate) {
  noise_ = {.random = std::mt19937_64(startValue), .rate = rate};
}

void FaultTransport::start(Smbus::Transaction const& transaction, Kex::U64 ticket,
                           Smbus::AnswerSink& sink) {
  sink_ = &sink;
  ticket_ = ticket;
  timeout_ = Timer::now() + transaction.address.busTimeout() / 1000.0;
  if (late_) {
    lateTimer_.startIn(0);
  }
  auto const fault = nextFault();
  fault_ = fault.value_or(Fault{});
  kind_ = fault ? &faultKinds()[static_cast<std::size_t>(fault->kind)] : nullptr;
  if (kind_ != nullptr && !kind_->isAsked) {
    fail(kind_->error.value_or(Smbus::ErrorKind::other));
  } else {
    inner_->start(transaction, ticket, *this);
  }
}

void FaultTransport::answerIs(Kex::U64 ticket, Smbus::Reply const& reply) {
  if (ticket != ticket_ || kind_ == nullptr) {
    return sink_->answerIs(ticket, reply);
  }
  if (kind_->error) {
    late_ = {.ticket = ticket, .reply = reply};
    return fail(*kind_->error);
  }
  Smbus::Reply changed = reply;
  if (kind_->change != nullptr) {
    kind_->change(fault_, std::span(changed.read.bytes).first(changed.read.length));
  }
  sink_->answerIs(ticket, changed);
}

std::optional<Fault> FaultTransport::nextFault() {
  auto const due = std::ranges::find_if(
      script_, [now = Timer::now()](Fault const& fault) { return fault.at <= now; });
  if (due == script_.end()) {
    return noise_ ? randomFault(*noise_) : std::nullopt;
  }
  Fault const fault = *due;
  if (fault.transactions != Fault::kForever && --due->transactions == 0) {
    script_.erase(due);
  }
  return fault;
}

std::optional<Fault> FaultTransport::randomFault(Noise& noise) {
  // A number of 53 random bits, as many as a double has.
  if (static_cast<double>(noise.random() >> 11) * 0x1p-53 >= noise.rate) {
    return std::nullopt;
  }
  auto const kind = static_cast<std::size_t>(noise.random() % faultKinds().size());
  return Fault{.kind = faultKinds()[kind].kind,
               .byte = static_cast<Kex::U8>(noise.random() % Smbus::kMaxBlock),
               .value = static_cast<Kex::U8>(noise.random())};
}

void FaultTransport::fail(Smbus::ErrorKind error) {
  bool const isTimeout = error == Smbus::ErrorKind::timeout;
  failure_ = Smbus::Reply::failed(error);
  failureTimer_.startAt(isTimeout ? std::max(Timer::now(), timeout_) : Timer::now());
}

void FaultTransport::giveLateAnswer() {
  if (auto const answer = std::exchange(late_, std::nullopt)) {
    sink_->answerIs(answer->ticket, answer->reply);
  }
}

}  // namespace Agent
