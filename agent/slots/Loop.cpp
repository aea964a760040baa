// The loop that turns the framework: on a virtual clock, or on the steady one.
#include "agent/slots/Loop.h"

#include <algorithm>
#include <asio/post.hpp>
#include <csignal>
#include <utility>

#include "host/kex/time/ActivityManager.h"

namespace Agent {

namespace {

/// Longest single wait in seconds; keeps far times within the range of the steady clock.
constexpr double kLongestWait = 3600;

using Seconds = std::chrono::duration<double>;
using std::chrono::steady_clock;

Kex::Clock& processClock() { return *Kex::activityManager().config().clock(); }

/// Brings the clock of a live loop that began at `start` up to the present.
void stepClock(steady_clock::time_point start) {
  processClock().timeIs(Seconds(steady_clock::now() - start).count());
}

}  // namespace

Loop::Loop(ClockKind kind)
    : kind_(kind),
      context_(std::make_shared<asio::io_context>()),
      guard_(asio::make_work_guard(*context_)),
      signals_(*context_, SIGINT, SIGTERM),
      hangUp_(*context_),
      start_(std::chrono::steady_clock::now()) {
  signals_.async_wait(
      [this](std::error_code const& error, int signal) { signal_ = error ? signal_ : signal; });
}

Loop::~Loop() = default;

void Loop::run(double until, std::function<bool()> const& isDone) {
  Kex::activityManager().runPending();
  while (!isStopped() && !isDone() && now() < until) {
    double const next = std::min(processClock().nextDeadline(), until);
    if (kind_ == ClockKind::virtualClock && next == kForever) {
      return;
    }
    waitUntil(next);
  }
}

void Loop::onHangUpIs(std::function<void()> onHangUp) {
  onHangUp_ = std::move(onHangUp);
  hangUp_.add(SIGHUP);
  awaitHangUp();
}

void Loop::awaitHangUp() {
  hangUp_.async_wait([this](std::error_code const& error, int) {
    if (!error) {
      onHangUp_();
      awaitHangUp();
    }
  });
}

void Loop::stop() { signal_ = SIGTERM; }

Status Loop::status() const {
  switch (signal_) {
    case SIGINT: return Status::interrupted;
    case SIGTERM: return Status::terminated;
    default: return Status::ok;
  }
}

double Loop::now() const { return processClock().time(); }

Post Loop::post() const {
  return [context = context_, kind = kind_, start = start_](std::function<void()> work) {
    asio::post(*context, [kind, start, work = std::move(work)] {
      // What other threads report has happened now, not when the loop began to wait.
      if (kind == ClockKind::steadyClock) {
        stepClock(start);
      }
      work();
    });
  };
}

void Loop::waitUntil(double time) {
  if (kind_ == ClockKind::virtualClock) {
    context_->poll();
    Kex::activityManager().runUntil(time);
    return;
  }
  Seconds const wait(std::min(time - now(), kLongestWait));
  context_->run_one_until(
      start_ + std::chrono::duration_cast<steady_clock::duration>(Seconds(now()) + wait));
  stepClock(start_);
  Kex::activityManager().runPending();
}

}  // namespace Agent
