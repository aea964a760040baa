// The transport of a Linux i2c bus.
#pragma once

#include <memory>

#include "agent/transport/LinuxBus.h"
#include "agent/transport/Post.h"
#include "agent/transport/Timer.h"
#include "host/smbus/Transport.h"

namespace Agent {

/// Carries out transactions on an i2c bus, on a thread of its own. The bus is looked up and opened
/// for each of them; while it is not there, they fail.
///
/// A transaction that the kernel keeps for longer than the address's bus timeout fails; one that is
/// started while the kernel still keeps an earlier one waits for its turn, within its own timeout.
/// Bytes that the device does not send read as zero; a count byte above 32 is an error.
class LinuxTransport final : public Smbus::Transport {
 public:
  /// `post` leads to the run loop's thread; it is not used any more once the transport has gone.
  LinuxTransport(LinuxBus bus, Post post);
  /// Does not wait for the kernel: a thread that it keeps ends by itself when it returns.
  ~LinuxTransport() override;

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override;

 private:
  class Mailbox;

  static void work(LinuxBus const& bus, Mailbox& mailbox);
  void handleReply(Kex::U64 ticket, Smbus::Reply const& reply);
  void handleDeadline();

  LinuxBus bus_;
  std::shared_ptr<Mailbox> mailbox_;
  Smbus::VornAddress address_;
  Kex::U64 ticket_ = 0;
  /// Who waits for an answer; null when the bus is idle.
  Smbus::AnswerSink* sink_ = nullptr;
  Timer deadline_;
};

}  // namespace Agent
