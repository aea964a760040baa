// What a service manager is told, and when.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "agent/base/OwnedFile.h"
#include "agent/service/Service.h"
#include "agent/slots/Loop.h"

namespace {

using Agent::ClockKind;
using Agent::Loop;
using Agent::Service;
using Words = std::vector<std::string>;

/// A manager on a socket of its own, and the time that goes by.
class Manager : public testing::Test {
 protected:
  Manager() : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    // The kernel names it: a zero byte, and then what stands for itself.
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    auto* const named = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof(address.sun_family);
    EXPECT_EQ(::bind(socket_.number(), named, size), 0);
    size = sizeof(address);
    EXPECT_EQ(::getsockname(socket_.number(), named, &size), 0);
    std::string const name(&address.sun_path[1], size - sizeof(address.sun_family) - 1);
    ::setenv("NOTIFY_SOCKET", ("@" + name).c_str(), 1);
  }
  ~Manager() override {
    ::unsetenv("NOTIFY_SOCKET");
    ::unsetenv("WATCHDOG_USEC");
  }

  /// What is told from the last time that was asked for up to `time`, in seconds from the start.
  Words toldUntil(double time) {
    loop_.run(start_ + time, [] { return false; });
    Words told;
    std::array<char, 256> bytes{};
    for (ssize_t size = 0; (size = ::recv(socket_.number(), bytes.data(), bytes.size(), 0)) > 0;) {
      told.emplace_back(bytes.data(), static_cast<std::size_t>(size));
    }
    return told;
  }

 private:
  Agent::OwnedFile socket_;
  Loop loop_{ClockKind::virtualClock};
  double start_ = loop_.now();
};

TEST_F(Manager, IsToldOfReadinessAfterFiveSecondsWithoutVerdicts) {
  Service service;
  service.stateIs("2 slots: 1 not known", false);
  service.reloadBegins();
  service.reloadEnds();
  EXPECT_EQ(toldUntil(4.999), (Words{"STATUS=2 slots: 1 not known", "RELOADING=1"}));
  EXPECT_EQ(toldUntil(5), (Words{"READY=1"}));
  service.stateIs("2 slots: 2 absent", true);
  EXPECT_EQ(toldUntil(60), (Words{"STATUS=2 slots: 2 absent"}));
}

TEST_F(Manager, IsToldOfReadinessOnceAllVerdictsAreThere) {
  {
    Service service;
    service.stateIs("1 slot: 1 not known", false);
    EXPECT_EQ(toldUntil(1), (Words{"STATUS=1 slot: 1 not known"}));
    service.stateIs("1 slot: 1 identified", true);
    service.stateIs("1 slot: 1 identified", true);
    EXPECT_EQ(toldUntil(60), (Words{"STATUS=1 slot: 1 identified", "READY=1"}));
    service.reloadBegins();
    service.reloadEnds();
    EXPECT_EQ(toldUntil(61), (Words{"RELOADING=1", "READY=1"}));
  }
  EXPECT_EQ(toldUntil(62), (Words{"STOPPING=1"}));
}

TEST_F(Manager, IsToldTwiceAWatchdogIntervalThatTheLoopTurns) {
  ::setenv("WATCHDOG_USEC", "3000000", 1);
  Service const service;
  EXPECT_EQ(toldUntil(1.4), (Words{"WATCHDOG=1"}));
  EXPECT_EQ(toldUntil(4.6), (Words{"WATCHDOG=1", "WATCHDOG=1", "WATCHDOG=1"}));
}

}  // namespace
