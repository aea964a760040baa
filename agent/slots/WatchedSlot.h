// A slot whose changes are printed as they happen.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "agent/base/Journal.h"
#include "agent/base/JsonObject.h"
#include "agent/base/Ledger.h"
#include "agent/base/Trouble.h"
#include "agent/publish/FlightRecorder.h"
#include "agent/publish/Publisher.h"
#include "agent/recording/Recorder.h"
#include "agent/recording/Redactor.h"
#include "agent/report/Meter.h"
#include "agent/slots/Slot.h"
#include "agent/slots/Steadiness.h"
#include "agent/transport/OnEnd.h"

namespace Agent {

/// How changes are told of.
struct Reporting {
  bool isJson = false;
  /// Whether every bus transaction is told of as well.
  bool isTranscript = false;
  /// Whether somebody waits for each line.
  bool isLive = false;
  /// Where FDL is published; null for nowhere.
  Publisher* publisher = nullptr;
  /// What counts; null for nothing.
  Meter* meter = nullptr;
  /// Where it is recorded what happens; null for nowhere.
  Recorder* recorder = nullptr;
  /// Called after what is known of a slot has changed; may be empty.
  std::function<void()> onChange{};
  /// Where incidents are written to; null for nowhere.
  IncidentFolder* incidents = nullptr;
  /// What serial numbers are recorded as; null: as they are.
  Pseudonyms const* pseudonyms = nullptr;
  /// Where it is kept that something cannot be written.
  Ledger ledger{};
  /// Of the lines on standard output.
  Trouble output{"standard output", ledger};
};

/// What somebody did to a slot.
struct Act {
  /// `"insert"`, `"remove"`, or the name of a kind of fault.
  std::string action;
  /// What the supply that is put into the slot is called; none for none.
  std::optional<std::string> supply{};
  /// How many transactions a fault meets.
  std::optional<Kex::U32> transactions{};
};

/// A slot that prints a line whenever its verdict, serial number or FDL differs from the last line
/// printed for it; for a person, the lines of an unsteady slot are summed up.
class WatchedSlot final : Smbus::TransactionObserver, RecordingSink {
 public:
  /// Opens the way to the slot's supply, whose end ends the slot.
  using Open = std::function<Opening(OnEnd onEnd)>;

  /// `source` is what the slot's supply is called in JSON, none for an empty slot. `reporting` must
  /// outlive the slot. Throws what `open` does.
  WatchedSlot(std::string const& name, std::optional<std::string> source, Open const& open,
              Plugin const& plugin, Reporting& reporting);
  WatchedSlot(WatchedSlot const&) = delete;
  WatchedSlot& operator=(WatchedSlot const&) = delete;
  ~WatchedSlot();

  Slot& slot() { return slot_; }
  /// None before the first detection has ended.
  std::optional<Verdict> verdict() const {
    return shown_ ? std::optional(shown_->verdict) : std::nullopt;
  }
  std::optional<std::string> const& source() const { return source_; }
  void sourceIs(std::optional<std::string> source) { source_ = std::move(source); }
  /// Records what somebody did to the slot.
  void actIs(Act const& act);

 private:
  /// What a line is about: two lines of the same are printed once.
  struct Shown {
    Verdict verdict;
    Kex::String8 serialNumber;
    Kex::String8 fdl;
    bool operator==(Shown const&) const = default;
  };

  void handleSupply(Supply const& supply);
  void handleTransaction(Smbus::Client const& client, Smbus::Transaction const& transaction,
                         Smbus::Reply const& reply) override;
  void transactionIs(RecordedTransaction const& transaction) override;
  void lineIs(std::string const& line) override;
  /// Stops the slot, whose source has ended, and tells why.
  void end(std::string const& why);
  /// What happens to the slot, as recordings and JSON lines begin to tell it.
  JsonObject event(char const* kind, double time) const;
  std::string startLine(Beginning const& beginning) const;
  /// `line` tells of something else than of transactions and supplies.
  void happen(std::string const& line);
  /// Begins the recording, if there is one; who is told what happens, null for nobody.
  RecordingSink* recording();
  /// Records that the slot is not watched any more, and why, unless the run ends.
  void recordStop(std::optional<std::string> const& why);
  /// For a person: whether the slot is steady, and how often it changes.
  void printSteadiness(std::string const& text) const;
  void print(std::string const& line, Priority priority = Priority::info) const;

  std::optional<std::string> source_;
  Reporting& reporting_;
  std::optional<Shown> shown_;
  std::optional<FlightRecorder> flight_;
  std::optional<Redactor> redactor_;
  /// How the slot's detection began first.
  Beginning beginning_;
  /// How far the recording has come.
  enum class Recorded : unsigned char { nothing, start, stop } recorded_ = Recorded::nothing;
  Steadiness steadiness_;
  Slot slot_;
};

}  // namespace Agent
