// What the page shows of one slot, as it is told and as the page's script reads it.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "agent/base/JsonObject.h"
#include "agent/recording/TransactionLog.h"

namespace Agent {

/// A line of the slot's verdicts.
struct LaneSupply {
  std::string verdict;
  /// The serial number and the FDL tell one supply from another.
  std::string serialNumber;
  std::string fdl;
  /// The members of its JSON object that come before `time`.
  JsonObject members{};
};

/// One slot over time. Everything is added in the order of its time, in seconds of the recording.
class Lane {
 public:
  /// The slot of this name in `file`.
  Lane(std::string slot, std::string file) : slot_(std::move(slot)), file_(std::move(file)) {}

  /// Adds a transaction, and what the handler said of it. Many are alike: what they share is kept
  /// once.
  void transactionIs(TransactionRecord const& record, std::vector<std::string> const& notes);
  /// Adds what is told of the supply from `time` on, if it differs from what was told last.
  void supplyIs(double time, LaneSupply supply);
  /// Adds what somebody did to the slot.
  void actIs(double time, std::string const& text);
  /// Adds what cannot be told.
  void noteIs(std::string note) { notes_.push_back(std::move(note)); }

  /// Appends the lane's JSON object to `out`.
  void appendTo(std::string& out) const;

 private:
  struct Last {
    TransactionRecord record;
    unsigned attempt = 1;
  };

  void trackReview(TransactionRecord const& record);
  Kex::U32 shapeOf(TransactionRecord const& record, unsigned attempt,
                   std::vector<std::string> const& notes);

  std::string slot_;
  std::string file_;
  /// Microseconds from one transaction to the next.
  std::vector<Kex::U64> steps_;
  std::vector<Kex::U32> shapes_;
  /// What transactions are, told apart by all that is shown of them.
  std::unordered_map<std::string, Kex::U32> known_;
  std::string shapesJson_;
  Kex::U64 lastMicros_ = 0;
  std::optional<Last> last_;
  std::optional<double> reviewStart_;
  std::vector<std::pair<double, double>> reviews_;
  std::optional<LaneSupply> told_;
  /// The serial number and FDL of the supply that was identified last.
  std::optional<std::pair<std::string, std::string>> identified_;
  std::string suppliesJson_;
  std::string actsJson_;
  std::vector<std::string> notes_;
};

}  // namespace Agent
