// What the tests of transports share: transactions, and a sink that notes the answers.
#pragma once

#include <string>
#include <vector>

#include "agent/base/Text.h"
#include "agent/transport/SimulatedBus.h"
#include "host/kex/time/ActivityManager.h"

namespace agentTest {

inline constexpr std::uint16_t kBusTimeout = 1000;

inline Smbus::VornAddress address(Kex::U8 device, Kex::U8 command) {
  Smbus::VornAddress address;
  address.deviceIs(Smbus::U7(device));
  address.offsetIs(command);
  address.busTimeoutIs(Hardware::SmbusTimeout(kBusTimeout));
  return address;
}

inline Smbus::Transaction mfrIdRead() { return {address(0x58, 0x99), {}, 33}; }

inline Smbus::Transaction fruRead(Kex::U8 start, Kex::U8 count = 1) {
  Smbus::Block write{.bytes = {count, start}, .length = 2};
  return {address(0x58, 0xB0), write, 17};
}

/// Notes each answer as "TICKET HEX" or "TICKET failure", its kind, and when it came.
struct Answers final : Smbus::AnswerSink {
  void answerIs(Kex::U64 ticket, Smbus::Reply const& reply) override {
    texts.push_back(
        std::to_string(ticket) + ' ' +
        (reply.isOk ? Agent::hex(reply.read.view()) : std::string(reply.failure.view())));
    errors.emplace_back(reply.isOk ? "" : Smbus::rowOf(reply.error).name);
    seconds.push_back(Agent::Timer::now() - begin);
  }

  double begin = Agent::Timer::now();
  std::vector<std::string> texts;
  std::vector<std::string> errors;
  std::vector<double> seconds;
};

/// Steps the clock.
inline void pass(double seconds) { Kex::activityManager().runUntil(Agent::Timer::now() + seconds); }

}  // namespace agentTest
