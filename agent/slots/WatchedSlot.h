// A slot whose changes are printed as they happen.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "agent/base/Ledger.h"
#include "agent/recording/Recorder.h"
#include "agent/slots/Publisher.h"
#include "agent/slots/Slot.h"
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
  /// Where every bus transaction is recorded; null for nowhere.
  Recorder* recorder = nullptr;
  /// Where it is kept that something cannot be written.
  Ledger ledger{};
};

/// A slot that prints a line whenever its verdict, serial number or FDL differs from the last line
/// printed for it.
class WatchedSlot final : Smbus::TransactionObserver {
 public:
  /// Opens the way to the slot's supply, whose end ends the slot.
  using Open = std::function<std::unique_ptr<Smbus::Transport>(OnEnd onEnd)>;

  /// `source` is what the slot's supply is called in JSON, none for an empty slot. `reporting` must
  /// outlive the slot. Throws what `open` does.
  WatchedSlot(std::string const& name, std::optional<std::string> source, Open const& open,
              Plugin const& plugin, Reporting& reporting);
  WatchedSlot(WatchedSlot const&) = delete;
  WatchedSlot& operator=(WatchedSlot const&) = delete;
  ~WatchedSlot() = default;

  Slot& slot() { return slot_; }
  void sourceIs(std::optional<std::string> source) { source_ = std::move(source); }

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
  /// Stops the slot, whose source has ended, and tells why.
  void end(std::string const& why);
  void publish(Supply const& supply);
  void print(std::string const& line) const;

  std::optional<std::string> source_;
  Reporting& reporting_;
  std::optional<Shown> shown_;
  Slot slot_;
};

}  // namespace Agent
