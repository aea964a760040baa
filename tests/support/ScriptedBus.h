// A scripted bus, and a slot on it whose identifier keeps a record of all that it does.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "agent/transport/SimulatedSupply.h"
#include "agent/transport/Timer.h"
#include "host/detector/SlotDriver.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/ActivityManager.h"
#include "host/kex/Format.h"
#include "host/kex/Trace.h"
#include "pmbus/Identifier.h"

namespace busTest {

using Lines = std::vector<std::string>;

/// The bytes with the last one added that makes their sum 0.
inline std::string checksummed(std::string bytes) {
  unsigned sum = 0;
  for (char const byte : bytes) {
    sum += static_cast<unsigned char>(byte);
  }
  return bytes += static_cast<char>(-sum & 0xff);
}

/// What a FRU image is made of; the area has a part number and a serial number.
struct Fru {
  std::string part = "P";
  std::string serial = "S1";
  unsigned areaStart = 1;  ///< in units of 8 bytes
  unsigned units = 0;      ///< the area's length; 0 is the least that holds it
  char headerVersion = 1;
  char areaVersion = 1;
  int unitsSaid = -1;        ///< the area's length as it stands in it, where that is another one
  unsigned char spoilt = 0;  ///< added to the area's checksum
  char language = 0x19;

  std::string image() const {
    std::string area{areaVersion, 0, language, 0, 0};  // no manufacturer name, no product name
    for (auto const& field : {part, std::string(), serial}) {
      area += static_cast<char>(field.size()) + field;  // kind 0, binary: the bytes as they stand
    }
    area += '\xC1';
    std::size_t const length = units != 0 ? std::size_t{units} * 8 : (area.size() / 8 + 1) * 8;
    area[1] = static_cast<char>(unitsSaid >= 0 ? static_cast<std::size_t>(unitsSaid) : length / 8);
    area.resize(length - 1);
    area = checksummed(area);
    area.back() = static_cast<char>(area.back() + spoilt);
    std::string image(256, '\0');
    for (std::size_t i = 0; i < length; ++i) {
      image[(std::size_t{areaStart} * 8 + i) % 256] = area[i];
    }
    return image.replace(0, 8,
                         checksummed({headerVersion, 0, 0, 0, static_cast<char>(areaStart), 0, 0}));
  }
};

/// Answers with a simulated supply, at once, and as its script says, one character a transaction:
/// `.` as the supply does, `x` no acknowledge, `h` timeout after 1 s, `0` to `9` that count byte,
/// `L` a count byte of 32, `f` one bit of the third byte flipped; `*` at the end: all that follow
/// as the supply does. A transaction after the script's end is not answered; a script with a rest
/// fails the test.
class ScriptedBus final : public Smbus::Transport {
 public:
  ScriptedBus() : timer_([this] { giveAnswer(); }) {}
  ScriptedBus(ScriptedBus const&) = delete;
  ScriptedBus& operator=(ScriptedBus const&) = delete;
  ~ScriptedBus() override { EXPECT_TRUE(script.empty() || script == "*") << "left: " << script; }

  std::string script;
  std::optional<Agent::SimulatedSupply> supply;
  std::function<void(std::string const&)> onStart = [](std::string const&) {};
  std::function<void()> onAnswer = [] {};

  void supplyIs(std::string const& image, std::string_view mfrId = "EMERSON") {
    supply.emplace(std::span(reinterpret_cast<Kex::U8 const*>(image.data()), image.size()), mfrId);
  }

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override {
    EXPECT_EQ(transaction.address.busTimeout(), 1000);
    ticket_ = ticket;
    sink_ = &sink;
    char const how = script.empty() ? '?' : script.front();
    if (how != '*' && how != '?') {
      script.erase(0, 1);
    }
    answer_ = supply ? supply->answer(transaction) : Agent::notAcknowledged();
    auto& bytes = answer_.read.bytes;
    if (how == 'x' || how == 'h') {
      answer_ = Smbus::Reply::failed(how == 'x' ? "no acknowledge" : "timeout");
    } else if (how == 'f') {
      bytes[2] ^= 1;
    } else if (how == 'L' || (how >= '0' && how <= '9')) {
      bytes[0] = how == 'L' ? Kex::U8{32} : static_cast<Kex::U8>(how - '0');
    }
    if (how != '?') {
      timer_.startIn(how == 'h' ? 1.0 : 0.0);
    }
    onStart(described(transaction));
  }

 private:
  /// "58:b0 w0108 r3": device, command, what is written, how much is wanted.
  static std::string described(Smbus::Transaction const& transaction) {
    std::string text =
        Kex::format("%02x:%02x", transaction.address.device(), transaction.address.offset())
            .charPtr();
    for (Kex::U8 const byte : transaction.write.view()) {
      text += Kex::format(text.size() == 5 ? " w%02x" : "%02x", byte).charPtr();
    }
    return text + " r" + std::to_string(transaction.readLength);
  }

  void giveAnswer() {
    onAnswer();
    sink_->answerIs(ticket_, answer_);
  }

  Agent::Timer timer_;
  Smbus::Reply answer_;
  Kex::U64 ticket_ = 0;
  Smbus::AnswerSink* sink_ = nullptr;
};

/// Manages the supplies of one part number.
class StubDescriptor final : public Ipmi::SupportedPowerSupplyDescriptorBase {
 public:
  StubDescriptor(char const* name, char const* part, Lines& asked)
      : SupportedPowerSupplyDescriptorBase(name), part_(part), asked_(asked) {}

  void doGenerateFdl(Kex::Ptr<Ipmi::IdpromContents> const& idprom) override {
    asked_.emplace_back(name().charPtr());
    managedIs(idprom->productInfo()->partNumber() == part_);
    fdlIs(managed() ? Kex::format("fdl of %s", name().charPtr()) : Kex::String8());
  }

 private:
  char const* part_;
  Lines& asked_;
};

/// Tells what is set on it, through `note`.
class Recording final : public Emerson::PmbusIdentifier::Identifier {
 public:
  using Identifier::Identifier;
  std::function<void(std::string const&)> note = [](std::string const&) {};

  void stateIs(IdentifierState state) override {
    note("state=" + std::to_string(state));
    Identifier::stateIs(state);
  }
  void serialNumIs(Kex::String8 text) override {
    note("serialNum='" + std::string(text.view()) + "'");
    Identifier::serialNumIs(text);
  }
  void fdlIs(Kex::String8 text) override {
    note("fdl='" + std::string(text.view()) + "'");
    Identifier::fdlIs(text);
  }
  void hwErrorIs(bool on) override {
    note(on ? "hwError" : "no hwError");
    Identifier::hwErrorIs(on);
  }
  void failCountIs(Kex::U8 count) override {
    note("failCount=" + std::to_string(count));
    Identifier::failCountIs(count);
  }
  BufPtr productInfoBufDel() override {
    note("no productInfoBuf");
    return Identifier::productInfoBufDel();
  }
  BufPtr productInfoBufIs(Kex::U32 size) override {
    note("productInfoBuf " + std::to_string(size));
    return Identifier::productInfoBufIs(size);
  }
};

/// A slot "S" on a bus of its own, on virtual time that starts at 0.
class Slot {
 public:
  explicit Slot(std::string script = "", Fru const& fru = {}, std::string_view mfrId = "EMERSON",
                Kex::U8 deviceId = 0x58)
      : bus(new ScriptedBus),
        vorn(Kex::make<Hardware::Vorn>(
            Kex::make<Smbus::Bus>(std::unique_ptr<Smbus::Transport>(bus)))),
        config(Kex::make<Hardware::PowerSupplySlot::SlotConfig>(
            "S", Kex::make<SmbusVorn::VornDesc>(vorn))),
        identifier(Kex::make<Recording>(clock(), config, status, vorn->newRequest(),
                                        vorn->newRequest(), vorn->newRequest(), nullptr, nullptr,
                                        nullptr, deviceId, Kex::U8{0xB0})) {
    // Whole seconds, so that sums of times are what they would be from 0 on.
    epoch_ = std::floor(clock()->time()) + 1;
    Kex::activityManager().runUntil(epoch_);
    bus->script = std::move(script);
    bus->supplyIs(fru.image(), mfrId);
    bus->onStart = [this](std::string const& transaction) {
      note("> " + transaction);
      happened(Kex::format("%c%g", "??PIC"[identifier->state()], now()).charPtr());
    };
    bus->onAnswer = [this] {
      note("");
      log.clear();
      answered_ = now();
    };
    identifier->note = [this](std::string const& line) { note(line); };
    Kex::TraceHandle::levelsIs("EmersonPmbusIdentifier", 0b11000);
    Kex::traceSinkIs([this](Kex::TraceRecord const& trace) {
      note(std::to_string(trace.level) + " " + trace.text.charPtr());
    });
    identifier->hasNotificationActiveIs(true);
  }
  Slot(Slot const&) = delete;
  Slot& operator=(Slot const&) = delete;
  ~Slot() {
    Kex::TraceHandle::levelsIs("EmersonPmbusIdentifier", 0);
    Kex::traceSinkIs({});
    for (auto const& descriptor : descriptors_) {
      registry()->powerSupplyDescriptorDel(descriptor->name());
    }
    bus->onStart = [](std::string const&) {};
    bus->onAnswer = [] {};
    identifier->note = [](std::string const&) {};
  }

  static Kex::Ptr<Kex::Clock> clock() { return Kex::activityManager().config().clock(); }
  static Kex::Ptr<Ipmi::SupportedPowerSupplyRegistry> registry() {
    return Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  }

  void descriptorIs(char const* name, char const* part) {
    descriptors_.push_back(Kex::make<StubDescriptor>(name, part, asked));
    registry()->powerSupplyDescriptorIs(descriptors_.back());
  }
  /// Hands the identifier to the driver, unless that is done, and runs up to `time` (seconds).
  Slot& run(double time = 0) {
    driver->identifierIs("EmersonPmbus", identifier);
    Kex::activityManager().runUntil(epoch_ + time);
    note("");
    return *this;
  }
  /// Every transaction, as `P` poll, `I` identify or `C` check and its time, and every verdict;
  /// what happens N times at once is written once, with N in front.
  std::string timeline() const {
    std::string text;
    for (auto const& [what, count] : happened_) {
      text += (text.empty() ? "" : " ") + (count > 1 ? std::to_string(count) : "") + what;
    }
    return text;
  }
  double now() const { return clock()->time() - epoch_; }
  Hardware::PowerSupplySlot::Supply const& supply() const { return *status->supply(); }
  std::string verdict() const { return status->supply() ? verdictName(supply().verdict) : "none"; }

  ScriptedBus* bus;
  Kex::Ptr<Hardware::Vorn> vorn;
  Kex::Ptr<Hardware::PowerSupplySlot::SlotConfig> config;
  Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus> status =
      Kex::make<Hardware::PowerSupplySlot::SlotStatus>("status");
  Kex::Ptr<PowerSupplyDetector::SlotDriver> driver =
      Kex::make<PowerSupplyDetector::SlotDriver>("driver");
  Kex::Ptr<Recording> identifier;
  /// What happened since the last answer of the bus: traces ("LEVEL TEXT"), attributes that were
  /// set, transactions ("> ..."), verdicts ("= ..."), deadlines in seconds from then ("wait ...")
  /// that were not over when the next thing happened.
  Lines log;
  /// The descriptors that were asked, in order.
  Lines asked;

 private:
  void happened(std::string const& what) {
    if (happened_.empty() || happened_.back().first != what) {
      happened_.emplace_back(what, 0);
    }
    ++happened_.back().second;
  }

  void note(std::string const& line) {
    if (status->version() != version_) {
      version_ = status->version();
      log.push_back("= " + verdict());
      happened(verdict());
    }
    double const deadline = identifier->timeMin();
    if (deadline != deadline_ && std::isfinite(deadline)) {
      log.emplace_back(Kex::format("wait %g", deadline - epoch_ - answered_).charPtr());
    }
    deadline_ = deadline;
    if (!line.empty()) {
      log.push_back(line);
    }
  }

  double epoch_ = 0;
  Kex::U32 version_ = 0;
  double deadline_ = HUGE_VAL;
  double answered_ = 0;
  std::vector<std::pair<std::string, int>> happened_;
  std::vector<Kex::Ptr<StubDescriptor>> descriptors_;
};

}  // namespace busTest
