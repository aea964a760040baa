// The fault wrapper: any transport, made to misbehave.
#include "agent/transport/FaultTransport.h"

#include <algorithm>
#include <utility>

#include "agent/transport/SimulatedSupply.h"

namespace Agent {

namespace {

Smbus::Reply timedOut() { return Smbus::Reply::failed("timeout"); }

}  // namespace

FaultTransport::FaultTransport(std::unique_ptr<Smbus::Transport> inner)
    : inner_(std::move(inner)),
      failureTimer_([this] { sink_->answerIs(ticket_, failure_); }),
      lateTimer_([this] { giveLateAnswer(); }) {}

void FaultTransport::randomIs(Kex::U64 startValue, double rate) {
  random_ = std::mt19937_64(startValue);
  rate_ = rate;
}

void FaultTransport::start(Smbus::Transaction const& transaction, Kex::U64 ticket,
                           Smbus::AnswerSink& sink) {
  sink_ = &sink;
  ticket_ = ticket;
  timeout_ = Timer::now() + transaction.address.busTimeout() / 1000.0;
  if (late_) {
    lateTimer_.startIn(0);
  }
  fault_ = nextFault();
  if (fault_ && fault_->kind == Fault::Kind::nack) {
    failAt(Timer::now(), notAcknowledged());
  } else if (fault_ && fault_->kind == Fault::Kind::hang) {
    failAt(timeout_, timedOut());
  } else {
    inner_->start(transaction, ticket, *this);
  }
}

void FaultTransport::answerIs(Kex::U64 ticket, Smbus::Reply const& reply) {
  if (ticket != ticket_ || !fault_) {
    return sink_->answerIs(ticket, reply);
  }
  if (fault_->kind == Fault::Kind::late) {
    late_ = {.ticket = ticket, .reply = reply};
    return failAt(std::max(Timer::now(), timeout_), timedOut());
  }
  Smbus::Reply changed = reply;
  auto const bytes = std::span(changed.read.bytes).first(changed.read.length);
  if (fault_->kind == Fault::Kind::count && !bytes.empty()) {
    bytes[0] = fault_->value;
    std::ranges::fill(bytes.subspan(std::min<std::size_t>(bytes.size(), fault_->value + 1U)), 0);
  } else if (fault_->kind == Fault::Kind::flip && fault_->byte < bytes.size()) {
    bytes[fault_->byte] ^= fault_->value;
  }
  sink_->answerIs(ticket, changed);
}

std::optional<Fault> FaultTransport::nextFault() {
  auto const due = std::ranges::find_if(
      script_, [now = Timer::now()](Fault const& fault) { return fault.at <= now; });
  if (due == script_.end()) {
    return rate_ > 0 ? randomFault() : std::nullopt;
  }
  Fault const fault = *due;
  if (fault.transactions != Fault::kForever && --due->transactions == 0) {
    script_.erase(due);
  }
  return fault;
}

std::optional<Fault> FaultTransport::randomFault() {
  // A number of 53 random bits, as many as a double has.
  if (static_cast<double>(random_() >> 11) * 0x1p-53 >= rate_) {
    return std::nullopt;
  }
  constexpr unsigned kKinds = 5;
  return Fault{.kind = static_cast<Fault::Kind>(random_() % kKinds),
               .byte = static_cast<Kex::U8>(random_() % Smbus::kMaxBlock),
               .value = static_cast<Kex::U8>(random_())};
}

void FaultTransport::failAt(double time, Smbus::Reply const& failure) {
  failure_ = failure;
  failureTimer_.startAt(time);
}

void FaultTransport::giveLateAnswer() {
  if (auto const answer = std::exchange(late_, std::nullopt)) {
    sink_->answerIs(answer->ticket, answer->reply);
  }
}

}  // namespace Agent
