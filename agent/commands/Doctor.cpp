// psu-agent doctor: whether i2c adapters can serve.
#include "agent/commands/Command.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "agent/base/Ledger.h"
#include "agent/base/Text.h"
#include "agent/slots/Loop.h"
#include "agent/transport/LinuxAdapter.h"
#include "agent/transport/LinuxTransport.h"
#include "agent/transport/SimulatedSupply.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

constexpr Kex::U8 kDevice = SimulatedSupply::kDevice;

/// The driver that holds the address, where the kernel names it.
std::string driverName(unsigned number) {
  std::string const device =
      Kex::format("/sys/bus/i2c/devices/%u-%04x/driver", number, kDevice).charPtr();
  std::error_code error;
  auto const driver = std::filesystem::read_symlink(device, error);
  return error ? "" : " " + inQuotes(driver.filename().string());
}

/// Asks for the MFR_ID at the supply's address.
class Probe final : Smbus::AnswerSink {
 public:
  Probe(LinuxBus const& bus, Post post) : transport_(bus, std::move(post)) {
    Smbus::Transaction transaction;
    transaction.readLength = Smbus::kMaxBlock;
    transaction.address.deviceIs(Smbus::U7(kDevice));
    transaction.address.offsetIs(SimulatedSupply::kMfrIdCommand);
    transaction.address.busTimeoutIs(Hardware::SmbusTimeout(1000));
    transport_.start(transaction, 0, *this);
  }

  /// What answered, for a person; none before the answer.
  std::optional<std::string> const& answer() const { return answer_; }

 private:
  void answerIs(Kex::U64, Smbus::Reply const& reply) override {
    answer_ = reply.isOk ? "MFR_ID " + inQuotes(textOf(reply.read.view().subspan(1)))
                         : std::string(Smbus::rowOf(reply.error).text);
  }
  static std::string textOf(std::span<Kex::U8 const> bytes) { return {bytes.begin(), bytes.end()}; }

  std::optional<std::string> answer_;
  LinuxTransport transport_;
};

/// A bus that is looked at.
class Examination {
 public:
  /// Throws a `Failure` when there is no such bus.
  Examination(LinuxBus const& bus, Post const& post)
      : node_(bus.node()), entry_(linuxAdapter(node_.number)) {
    try {
      adapter_.emplace(node_);
    } catch (Failure const& failure) {
      if (!entry_) {
        throw;
      }
      refusal_ = failure.what();
      return;
    }
    isHeld_ = adapter_->isHeld(kDevice);
    if (canServe()) {
      probe_.emplace(bus, post);
    }
  }

  bool isDone() const { return !probe_ || probe_->answer(); }
  Status status() const {
    return canServe() ? Status::ok : adapter_ ? Status::notIdentified : Status::failed;
  }
  /// One line, when all is known.
  std::string text() const;

 private:
  bool canServe() const { return adapter_ && !isHeld_ && adapter_->way() != LinuxWay::none; }

  LinuxNode node_;
  std::optional<LinuxAdapterEntry> entry_;
  /// None where it cannot be opened, for which the text gives the reason.
  std::optional<LinuxAdapter> adapter_;
  std::string refusal_;
  bool isHeld_ = false;
  std::optional<Probe> probe_;
};

std::string Examination::text() const {
  std::string const bus = linuxBusName(node_.number) + ": ";
  std::string text =
      bus + (entry_ ? inQuotes(entry_->name) : "-") + "; " + (entry_ ? oneLine(entry_->path) : "-");
  if (!adapter_) {
    std::string_view const why = refusal_;
    return text.append("; ").append(why.substr(why.starts_with(bus) ? bus.size() : 0)) +
           "; recognition cannot work";
  }
  LinuxWay const way = adapter_->way();
  std::string const can = usefulFunctions(adapter_->functions(), true);
  text += Kex::format("; functions 0x%08lx, of use: ", adapter_->functions()).view();
  text += (can.empty() ? "none" : can) + "; way: " + std::string(nameOf(way));
  if (way == LinuxWay::none) {
    text += ", it lacks " + usefulFunctions(adapter_->functions(), false);
  }
  text += Kex::format("; address 0x%02x: ", kDevice).view();
  text += isHeld_ ? "held by the kernel driver" + driverName(node_.number) : "free";
  if (probe_) {
    text += ", " + probe_->answer().value_or("no answer");
  }
  return text + "; recognition " + (canServe() ? "can" : "cannot") + " work";
}

std::vector<LinuxBus> busesOf(std::vector<std::string> const& sources) {
  constexpr std::string_view kPrefix = "i2c:";
  std::vector<LinuxBus> buses;
  for (std::string const& source : sources) {
    if (!source.starts_with(kPrefix)) {
      throw UsageError("doctor: " + oneLine(source) + " is no i2c:...");
    }
    buses.emplace_back(source.substr(kPrefix.size()));
  }
  return buses;
}

std::vector<LinuxBus> allBuses() {
  std::vector<LinuxBus> buses;
  for (LinuxAdapterEntry const& adapter : linuxAdapters()) {
    buses.emplace_back(std::to_string(adapter.number));
  }
  if (buses.empty()) {
    throw Failure("doctor: " + linuxAdaptersText());
  }
  return buses;
}

Status doctor(std::vector<std::string> const& sources) {
  std::vector<LinuxBus> const buses = sources.empty() ? allBuses() : busesOf(sources);
  Loop loop(ClockKind::steadyClock);
  Ledger ledger;
  std::vector<std::unique_ptr<Examination>> examinations;
  for (LinuxBus const& bus : buses) {
    ledger.attempt(
        [&] { examinations.push_back(std::make_unique<Examination>(bus, loop.post())); });
  }
  loop.run(Loop::kForever, [&] {
    return std::ranges::all_of(examinations, [](auto const& one) { return one->isDone(); });
  });
  for (auto const& one : examinations) {
    std::cout << one->text() << '\n';
    ledger.add(one->status());
  }
  return ledger.status();
}

}  // namespace

Action prepareDoctor(Parameters& command) {
  auto const sources = std::make_shared<std::vector<std::string>>();
  command.add("SOURCE", *sources,
              "i2c:N, i2c:PATH or i2c:name=TEXT; all adapters when none is named");
  return [sources](Globals const&) { return doctor(*sources); };
}

}  // namespace Agent
