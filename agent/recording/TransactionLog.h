// A slot's transactions, kept as they end.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <utility>

#include "host/smbus/Bus.h"

namespace Agent {

/// One transaction as it ended.
struct TransactionRecord {
  /// When it ended, in seconds of the clock.
  double time = 0;
  /// Which request it was: "pollForInsertion", ...
  std::string request;
  Smbus::Transaction transaction;
  bool isOk = false;
  /// The bytes as they reached the handler's buffer, count byte first; empty when it failed.
  Smbus::Block read;
  /// What went wrong; of a failure only.
  Smbus::ErrorKind error = Smbus::ErrorKind::other;
  /// Why it failed, for a person.
  std::string failure;
};

/// The record of `client`'s transaction, which has just ended with `reply`.
TransactionRecord recordOf(Smbus::Client const& client, Smbus::Transaction const& transaction,
                           Smbus::Reply const& reply);

/// Whether a detection begins with a transaction of the request of this name: the read of MFR_ID.
inline bool beginsDetection(Kex::Name const& request, Smbus::Transaction const& transaction) {
  return transaction.write.length == 0 && request == "pollForInsertion";
}

/// Keeps the latest transactions of a bus.
class TransactionLog final : public Smbus::TransactionObserver {
 public:
  /// More than any detection has.
  static constexpr std::size_t kMost = 1000;

  std::deque<TransactionRecord> const& records() const { return records_; }
  /// Called with each record as it is made.
  void onRecordIs(std::function<void(TransactionRecord const&)> onRecord) {
    onRecord_ = std::move(onRecord);
  }

 private:
  void handleTransaction(Smbus::Client const& client, Smbus::Transaction const& transaction,
                         Smbus::Reply const& reply) override;

  std::deque<TransactionRecord> records_;
  std::function<void(TransactionRecord const&)> onRecord_;
};

}  // namespace Agent
