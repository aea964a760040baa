// A scripted bus, and a slot on it whose identifier keeps a record of all that it does.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "agent/base/Text.h"
#include "agent/transport/Timer.h"
#include "host/detector/SlotDriver.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/base/Format.h"
#include "host/kex/time/ActivityManager.h"
#include "host/kex/trace/Trace.h"
#include "pmbus/Identifier.h"
#include "tests/support/Fru.h"

namespace busTest {

using Hardware::PowerSupplySlot::SlotConfig;
using Hardware::PowerSupplySlot::SlotStatus;
using Hardware::PowerSupplySlot::Supply;
using Kex::make;
using Kex::Ptr;

/// Answers with a simulated supply, at once, and as its script says, one character a transaction:
/// `.` as the supply does, `x` no acknowledge, `h` timeout after 1 s, `0` to `9` that count byte,
/// `f` one bit of the third byte flipped; `*` at the end: all that follow as the supply does. A
/// transaction after the script's end is not answered; a script with a rest fails the test.
class ScriptedBus final : public Smbus::Transport {
 public:
  ScriptedBus(std::string how, Agent::SimulatedSupply const& who)
      : script(std::move(how)), supply(who) {}
  ~ScriptedBus() override { EXPECT_TRUE(script.empty() || script == "*") << "left: " << script; }

  std::string script;
  Agent::SimulatedSupply supply;
  /// Is told "58:B0<0108>3": device, command, what is written, how much is wanted.
  std::function<void(std::string const&)> onStart;
  std::function<void()> onAnswer;

  void start(Smbus::Transaction const& asked, Kex::U64 ticket, Smbus::AnswerSink& sink) override {
    EXPECT_EQ(asked.address.busTimeout(), 1000);
    char const how = script.empty() ? '?' : script.front();
    script.erase(0, how == '*' ? 0 : 1);
    Smbus::Reply reply = supply.answer(asked);
    if (how == 'x' || how == 'h') {
      reply = Smbus::Reply::failed(how == 'x' ? Smbus::ErrorKind::noAcknowledge
                                              : Smbus::ErrorKind::timeout);
    } else if (how == 'f') {
      reply.read.bytes[2] ^= 1;
    } else if (how >= '0' && how <= '9') {
      reply.read.bytes[0] = static_cast<Kex::U8>(how - '0');
    }
    answer_ = [this, ticket, &sink, reply] {
      onAnswer();
      sink.answerIs(ticket, reply);
    };
    if (how != '?') {
      timer_.startIn(how == 'h' ? 1 : 0);
    }
    Kex::U8 const address[] = {asked.address.device(), asked.address.offset()};
    onStart(Agent::hex(address, ":") + "<" + Agent::hex(asked.write.view()) + ">" +
            std::to_string(asked.readLength));
  }

 private:
  std::function<void()> answer_;
  // An answer may start the next transaction.
  Agent::Timer timer_{[this] { std::exchange(answer_, {})(); }};
};

/// Manages the supplies of one part number.
class StubDescriptor final : public Ipmi::SupportedPowerSupplyDescriptorBase {
 public:
  StubDescriptor(char const* name, char const* part)
      : SupportedPowerSupplyDescriptorBase(name), part_(part) {
    SupportedPowerSupplyDescriptorBase::fdlIs("not asked");
  }

  void doGenerateFdl(Ptr<Ipmi::IdpromContents> const& idprom) override {
    managedIs(idprom->productInfo()->partNumber() == part_);
    fdlIs(managed() ? Kex::format("fdl of %s", name().charPtr()) : Kex::String8());
  }

 private:
  char const* part_;
};

/// Tells what is set on it, through `note`.
class Recording final : public Emerson::PmbusIdentifier::Identifier {
 public:
  using Identifier::Identifier;
  std::function<void(std::string const&)> note;

  void stateIs(IdentifierState state) override { Identifier::stateIs(noted("state", state)); }
  void fdlIs(Kex::String8 text) override { Identifier::fdlIs(noted("fdl", text)); }
  void hwErrorIs(bool on) override { Identifier::hwErrorIs(noted("hwError", on)); }
  void serialNumIs(Kex::String8 text) override {
    Identifier::serialNumIs(noted("serialNum", text));
  }
  void failCountIs(Kex::U8 count) override {
    noted("failCount", unsigned{count});
    Identifier::failCountIs(count);
  }
  BufPtr productInfoBufIs(Kex::U32 size) override {
    return Identifier::productInfoBufIs(noted("productInfoBuf", size));
  }
  BufPtr productInfoBufDel() override {
    noted("productInfoBuf", "none");
    return Identifier::productInfoBufDel();
  }

 private:
  template <class Value>
  Value noted(char const* attribute, Value value) const {
    std::ostringstream line;
    line << attribute << '=' << std::boolalpha << value;
    note(line.str());
    return value;
  }
};

/// A slot "S" on a bus of its own, on virtual time that starts at 0.
class Slot {
 public:
  explicit Slot(std::string script = "", Fru const& fru = {}, Kex::U8 deviceId = 0x58)
      : bus(new ScriptedBus(std::move(script), fru.supply())),
        identifier(make<Recording>(clock(), config, status, vorn->newRequest(), vorn->newRequest(),
                                   vorn->newRequest(), nullptr, nullptr, nullptr, deviceId,
                                   Kex::U8{0xB0})) {
    Kex::activityManager().runUntil(epoch_);
    bus->onStart = [this](std::string const& transaction) {
      note("> " + transaction);
      add(timeline, " ", Kex::format("%c%g", "??PIC"[identifier->state()], now()).charPtr());
    };
    bus->onAnswer = [this] {
      note("");
      log.clear();
      answered_ = now();
    };
    identifier->note = [this](std::string const& what) { note(what); };
    Kex::TraceHandle::levelsIs("EmersonPmbusIdentifier", 0b11000);
    Kex::TraceHandle::facilityIs("EmersonPmbusIdentifier", true);
    Kex::traceSinkIs([this](Kex::TraceRecord const& trace) {
      note(std::to_string(trace.level) + " " + trace.text.charPtr());
    });
    identifier->hasNotificationActiveIs(true);
  }
  Slot(Slot const&) = delete;
  ~Slot() {
    Kex::TraceHandle::facilityIs("EmersonPmbusIdentifier", false);
    Kex::traceSinkIs({});
    for (auto const& name : registry().memberNames()) {
      registry().powerSupplyDescriptorDel(name);
    }
  }

  static Ptr<Kex::Clock> clock() { return Kex::activityManager().config().clock(); }
  static Ipmi::SupportedPowerSupplyRegistry& registry() {
    return *Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  }
  static void descriptorIs(char const* name, char const* part) {
    registry().powerSupplyDescriptorIs(make<StubDescriptor>(name, part));
  }

  /// Hands the identifier to the driver, unless that is done, and runs up to `time` (seconds).
  Slot& run(double time = 0) {
    driver->identifierIs("EmersonPmbus", identifier);
    Kex::activityManager().runUntil(epoch_ + time);
    note("");
    return *this;
  }
  double now() const { return clock()->time() - epoch_; }
  Supply const& supply() const { return *status->supply(); }
  std::string verdict() const { return status->supply() ? verdictName(supply().verdict) : "none"; }

  /// What happened since the last answer of the bus, with "; " between: traces ("LEVEL TEXT"),
  /// attributes that were set ("NAME=VALUE"), transactions ("> ..."), verdicts ("= ..."), deadlines
  /// in seconds from then ("wait ...") that were not over when the next thing happened.
  std::string log;
  /// Every transaction, as `P` poll, `I` identify or `C` check and its time, and every verdict.
  std::string timeline;

  ScriptedBus* bus;
  Ptr<Hardware::Vorn> vorn =
      make<Hardware::Vorn>(make<Smbus::Bus>(std::unique_ptr<Smbus::Transport>(bus)));
  Ptr<SlotConfig> config = make<SlotConfig>("S", make<SmbusVorn::VornDesc>(vorn));
  Ptr<SlotStatus> status = make<SlotStatus>("status");
  Ptr<PowerSupplyDetector::SlotDriver> driver = make<PowerSupplyDetector::SlotDriver>("driver");
  Ptr<Recording> identifier;

 private:
  static void add(std::string& list, char const* separator, std::string const& item) {
    list += (list.empty() ? "" : separator) + item;
  }
  void note(std::string const& what) {
    if (status->version() != version_) {
      version_ = status->version();
      add(log, "; ", "= " + verdict());
      add(timeline, " ", verdict());
    }
    double const deadline = identifier->timeMin();
    if (std::exchange(deadline_, deadline) != deadline && std::isfinite(deadline)) {
      add(log, "; ", Kex::format("wait %g", deadline - epoch_ - answered_).charPtr());
    }
    if (!what.empty()) {
      add(log, "; ", what);
    }
  }

  // Whole seconds, so that sums of times are what they would be from 0 on.
  double const epoch_ = std::floor(clock()->time()) + 1;
  Kex::U32 version_ = 0;
  double deadline_ = HUGE_VAL;
  double answered_ = 0;
};

}  // namespace busTest
