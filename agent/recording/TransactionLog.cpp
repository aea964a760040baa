// A slot's transactions, kept as they end.
#include "agent/recording/TransactionLog.h"

#include "host/kex/time/ActivityManager.h"

namespace Agent {

TransactionRecord recordOf(Hardware::VornRequest const& request,
                           Smbus::Transaction const& transaction) {
  return {.time = Kex::activityManager().config().clock()->time(),
          .request = std::string(request.name().str().view()),
          .transaction = transaction,
          .isOk = request.status() == Kex::Request::kSucceeded,
          .read = request.lastRead(),
          .failure = std::string(request.failure().view())};
}

void TransactionLog::handleTransaction(Hardware::VornRequest const& request,
                                       Smbus::Transaction const& transaction) {
  records_.push_back(recordOf(request, transaction));
  if (onRecord_) {
    onRecord_(records_.back());
  }
  if (records_.size() > kMost) {
    records_.pop_front();
  }
}

}  // namespace Agent
