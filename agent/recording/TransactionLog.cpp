// A slot's transactions, kept as they end.
#include "agent/recording/TransactionLog.h"

#include "host/kex/time/ActivityManager.h"

namespace Agent {

TransactionRecord recordOf(Smbus::Client const& client, Smbus::Transaction const& transaction,
                           Smbus::Reply const& reply) {
  return {.time = Kex::activityManager().config().clock()->time(),
          .request = client.name(),
          .transaction = transaction,
          .isOk = reply.isOk,
          .read = reply.isOk ? reply.readOf(transaction.readLength) : Smbus::Block{},
          .error = reply.error,
          .failure = std::string(reply.failure.view())};
}

void TransactionLog::handleTransaction(Smbus::Client const& client,
                                       Smbus::Transaction const& transaction,
                                       Smbus::Reply const& reply) {
  records_.push_back(recordOf(client, transaction, reply));
  if (onRecord_) {
    onRecord_(records_.back());
  }
  if (records_.size() > kMost) {
    records_.pop_front();
  }
}

}  // namespace Agent
