// The transport of a Linux i2c bus.
#include "agent/transport/LinuxTransport.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "agent/transport/LinuxAdapter.h"
#include "host/kex/base/Format.h"

namespace Agent {

using Smbus::ErrorKind;
using Smbus::Reply;

/// What the run loop's thread and the worker share. It outlives whichever of them ends first.
class LinuxTransport::Mailbox : public std::enable_shared_from_this<Mailbox> {
 public:
  struct Job {
    Smbus::Transaction transaction;
    Kex::U64 ticket;
  };

  Mailbox(LinuxTransport* owner, Post post) : owner_(owner), post_(std::move(post)) {}

  void jobIs(Job const& job) {
    std::scoped_lock const lock(mutex_);
    job_ = job;
    changed_.notify_one();
  }
  /// Takes the job back. False when the worker has it already.
  bool jobDel() {
    std::scoped_lock const lock(mutex_);
    return std::exchange(job_, std::nullopt).has_value();
  }
  /// Ends the worker, and its answers: afterwards nothing is posted, and what was is dropped.
  void close() {
    std::scoped_lock const lock(mutex_);
    owner_ = nullptr;
    post_ = nullptr;
    changed_.notify_one();
  }

  /// For the worker: waits for a job; none when there will be no more.
  std::optional<Job> nextJob() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return job_ || !post_; });
    return post_ ? std::exchange(job_, std::nullopt) : std::nullopt;
  }
  /// For the worker: has the owner told of the reply.
  void replyIs(Kex::U64 ticket, Smbus::Reply reply) {
    std::scoped_lock const lock(mutex_);
    if (post_) {
      post_([self = weak_from_this(), ticket, reply = std::move(reply)] {
        auto const mailbox = self.lock();
        if (mailbox && mailbox->owner_ != nullptr) {
          mailbox->owner_->handleReply(ticket, reply);
        }
      });
    }
  }

 private:
  /// Written and read on the run loop's thread only.
  LinuxTransport* owner_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<Job> job_;
  Post post_;
};

namespace {

Reply replyTo(LinuxBus const& bus, Smbus::Transaction const& transaction) {
  try {
    return LinuxAdapter(bus.node()).transfer(transaction);
  } catch (BusFailure const& failure) {
    return Reply::failed(failure.kind(), failure.what());
  } catch (std::exception const& error) {
    return Reply::failed(ErrorKind::other, error.what());
  }
}

}  // namespace

LinuxTransport::LinuxTransport(LinuxBus bus, Post post)
    : bus_(std::move(bus)),
      mailbox_(std::make_shared<Mailbox>(this, std::move(post))),
      deadline_([this] { handleDeadline(); }) {
  std::thread([bus = bus_, mailbox = mailbox_] { work(bus, *mailbox); }).detach();
}

LinuxTransport::~LinuxTransport() { mailbox_->close(); }

void LinuxTransport::work(LinuxBus const& bus, Mailbox& mailbox) {
  for (;;) {
    auto const job = mailbox.nextJob();
    if (!job) {
      return;
    }
    try {
      mailbox.replyIs(job->ticket, replyTo(bus, job->transaction));
    } catch (...) {
      // No memory for the answer: the deadline gives one.
    }
  }
}

void LinuxTransport::start(Smbus::Transaction const& transaction, Kex::U64 ticket,
                           Smbus::AnswerSink& sink) {
  address_ = transaction.address;
  ticket_ = ticket;
  sink_ = &sink;
  deadline_.startIn(address_.busTimeout() / 1e3);
  mailbox_->jobIs({.transaction = transaction, .ticket = ticket});
}

void LinuxTransport::handleReply(Kex::U64 ticket, Smbus::Reply const& reply) {
  if (sink_ != nullptr && ticket == ticket_) {
    deadline_.stop();
    std::exchange(sink_, nullptr)->answerIs(ticket, reply);
  }
}

void LinuxTransport::handleDeadline() {
  bool const isWaiting = mailbox_->jobDel();
  char const* const what = isWaiting
                               ? "the kernel did not give the bus back from an earlier transaction"
                               : "the kernel did not return";
  handleReply(ticket_, Reply::failed(isWaiting ? ErrorKind::busBusy : ErrorKind::timeout,
                                     Kex::format("%s, device 0x%02x: %s within the bus timeout of "
                                                 "%u ms",
                                                 bus_.name().c_str(), address_.device(), what,
                                                 unsigned{address_.busTimeout()})));
}

}  // namespace Agent
