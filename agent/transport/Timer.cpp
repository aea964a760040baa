// A single-shot timer on the framework's clock.
#include "agent/transport/Timer.h"

#include <limits>
#include <utility>

#include "host/kex/time/ActivityManager.h"

namespace Agent {

class Timer::Reactor final : public Kex::Clock::NotifieeConst {
 public:
  explicit Reactor(std::function<void()> onTime)
      : NotifieeConst(Kex::activityManager().config().clock()), onTime_(std::move(onTime)) {}

 private:
  void onTime() override {
    // The callback may let go of the timer.
    Kex::Ptr<Reactor> const self(this);
    onTime_();
  }

  std::function<void()> onTime_;
};

Timer::Timer(std::function<void()> onTime) : reactor_(Kex::make<Reactor>(std::move(onTime))) {}

Timer::~Timer() { reactor_->isRegisteredNotifieeIs(false); }

void Timer::startAt(double time) { reactor_->timeMinIs(time); }

void Timer::stop() { reactor_->timeMinIs(std::numeric_limits<double>::infinity()); }

double Timer::now() { return Kex::activityManager().config().clock()->time(); }

}  // namespace Agent
