// The transport that plays a recording.
#include "agent/recording/ReplayTransport.h"

#include <algorithm>
#include <utility>

#include "agent/base/Text.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

bool isSame(Smbus::Transaction const& one, Smbus::Transaction const& other) {
  return one.address.device() == other.address.device() &&
         one.address.offset() == other.address.offset() && one.readLength == other.readLength &&
         std::ranges::equal(one.write.view(), other.write.view());
}

std::string described(Smbus::Transaction const& transaction) {
  return Kex::format(
             "device 0x%02x, command 0x%02x, %s%s, %u bytes read", transaction.address.device(),
             transaction.address.offset(),
             transaction.write.length == 0 ? "nothing" : hex(transaction.write.view()).c_str(),
             " written", unsigned{transaction.readLength})
      .charPtr();
}

}  // namespace

ReplayTransport::ReplayTransport(std::string const& target, OnEnd onEnd)
    : file_(target.substr(0, target.rfind('#'))),
      onEnd_(std::move(onEnd)),
      timer_([this] { finish(); }) {
  std::string const slot = file_.size() < target.size() ? target.substr(file_.size() + 1) : "";
  Recording const recording(file_);
  transactions_ = recording.transactions(slot);
  isCut_ = recording.isCut();
}

void ReplayTransport::start(Smbus::Transaction const& transaction, Kex::U64 ticket,
                            Smbus::AnswerSink& sink) {
  ticket_ = ticket;
  sink_ = &sink;
  if (end_.empty()) {
    end_ = obstacle(transaction);
  }
  // A recording that began later than this run is not waited for longer than a bus would be.
  double const latest = Timer::now() + transaction.address.busTimeout() / 1e3;
  timer_.startAt(end_.empty() ? std::min(transactions_[next_].record.time, latest) : Timer::now());
}

std::string ReplayTransport::obstacle(Smbus::Transaction const& transaction) const {
  bool const isOver = next_ == transactions_.size();
  auto const& [record, line] = transactions_[isOver ? next_ - 1 : next_];
  std::string const where = file_ + ":" + std::to_string(line) + ": ";
  if (isOver) {
    return where + "the recording ends here" + (isCut_ ? "; the file's last line is cut" : "");
  }
  return isSame(transaction, record.transaction)
             ? ""
             : where + "the recorded request (" + described(record.transaction) +
                   ") is not the one that is asked for (" + described(transaction) + ")";
}

void ReplayTransport::finish() {
  if (!end_.empty()) {
    if (auto const onEnd = std::exchange(onEnd_, {})) {
      onEnd(end_);
    }
    return sink_->answerIs(
        ticket_, Smbus::Reply::failed(Smbus::ErrorKind::busGone, Kex::String8(std::string(end_))));
  }
  TransactionRecord const& record = transactions_[next_++].record;
  sink_->answerIs(ticket_, {.isOk = record.isOk,
                            .read = record.read,
                            .error = record.error,
                            .failure = Kex::String8(std::string_view(record.failure))});
}

}  // namespace Agent
