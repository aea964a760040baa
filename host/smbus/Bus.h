// Smbus::Bus, the queue of one bus.
#pragma once

#include <memory>
#include <vector>

#include "host/kex/notify/PtrInterface.h"
#include "host/smbus/Client.h"

namespace Smbus {

/// Sees every transaction of a bus when it has ended.
class KEX_API TransactionObserver {
 public:
  /// `client`'s `transaction` ended with `reply`, of which the client was told just before.
  virtual void handleTransaction(Client const& client, Transaction const& transaction,
                                 Reply const& reply) = 0;

 protected:
  TransactionObserver() = default;
  TransactionObserver(TransactionObserver const&) = default;
  TransactionObserver& operator=(TransactionObserver const&) = default;
  ~TransactionObserver() = default;
};

/// One bus: its clients wait their turn, one transaction is on the wire at a time. It fails one
/// whose transport throws, or does not answer within the address's bus timeout.
class KEX_API Bus final : public Kex::PtrInterface, private AnswerSink {
 public:
  static Kex::KexType& _fwkType();

  /// The transport is the bus's from now on; not null.
  explicit Bus(std::unique_ptr<Transport> transport);
  Kex::KexType& fwkType() const override;
  ~Bus() override;

  /// Queues a transaction of `client`, which withdraws itself before it goes away.
  void clientQEnq(Client& client);
  /// Takes back what `client` queued: it is not started if it waits, and its answer is dropped if
  /// it is on the wire.
  void clientDel(Client& client);

  /// Who sees the transactions; null for nobody. Not owned.
  void observerIs(TransactionObserver* observer) { observer_ = observer; }

 private:
  class Deadline;

  void answerIs(Kex::U64 ticket, Reply const& reply) override;
  void start(Client& client);
  /// Fails the transaction under way if its time is over, else waits on.
  void handleDeadline();

  std::unique_ptr<Transport> transport_;
  std::vector<Client*> waiting_;
  TransactionObserver* observer_ = nullptr;
  Transaction transaction_;
  /// Whose transaction is on the wire; null when it was withdrawn or the bus is idle.
  Client* current_ = nullptr;
  Kex::U64 ticket_ = 0;
  /// When the transaction under way is over, whatever its transport says; in seconds.
  double due_ = 0;
  Kex::Ptr<Deadline> deadline_;
  bool isBusy_ = false;
};

}  // namespace Smbus
