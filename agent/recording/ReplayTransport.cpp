// The transport that plays a recording.
#include "agent/recording/ReplayTransport.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "agent/base/Error.h"
#include "agent/base/Text.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

/// Whether both ask for the same, perhaps for more or less of it.
bool isSameQuestion(Smbus::Transaction const& one, Smbus::Transaction const& other) {
  return one.address.device() == other.address.device() &&
         one.address.offset() == other.address.offset() &&
         std::ranges::equal(one.write.view(), other.write.view());
}

/// Whether it is known what a read of `length` bytes would have brought.
bool isKnown(TransactionRecord const& record, Kex::U8 length) {
  return !record.isOk ||
         std::min<unsigned>(length, record.read.bytes[0] + 1U) <= record.read.length;
}

std::string described(Smbus::Transaction const& transaction) {
  return Kex::format(
             "device 0x%02x, command 0x%02x, %s%s, %u bytes read", transaction.address.device(),
             transaction.address.offset(),
             transaction.write.length == 0 ? "nothing" : hex(transaction.write.view()).c_str(),
             " written", unsigned{transaction.readLength})
      .charPtr();
}

/// The recording of `target`; what it cannot tell of the slot is told of.
Recording opened(ReplayTarget const& target) {
  Recording recording(target.file);
  for (std::string const& doubt : recording.doubts(target.slot)) {
    complain(doubt, Priority::warning);
  }
  return recording;
}

}  // namespace

ReplayTarget::ReplayTarget(std::string const& target) : file(target) {
  std::error_code error;
  std::size_t const mark = target.rfind('#');
  if (mark != std::string::npos && !std::filesystem::exists(target, error)) {
    file = target.substr(0, mark);
    slot = target.substr(mark + 1);
  }
}

ReplayTransport::ReplayTransport(ReplayTarget const& target, OnEnd onEnd)
    : ReplayTransport(opened(target), target.slot, std::move(onEnd), 0) {
  if (beginning_) {
    origin_ = Timer::now() - beginning_->time;
  }
}

ReplayTransport::ReplayTransport(Recording const& recording, std::string const& slot, OnEnd onEnd,
                                 double origin)
    : file_(recording.file()),
      beginning_(recording.beginning(slot)),
      origin_(origin),
      onEnd_(std::move(onEnd)),
      transactions_(recording.transactions(slot)),
      isTrace_(recording.isTrace()),
      isCut_(recording.isCut()),
      timer_([this] { finish(); }) {}

void ReplayTransport::start(Smbus::Transaction const& transaction, Kex::U64 ticket,
                            Smbus::AnswerSink& sink) {
  ticket_ = ticket;
  sink_ = &sink;
  if (isTrace_) {
    seek(transaction);
  }
  if (end_.empty()) {
    end_ = obstacle(transaction);
  }
  // A recording that began later than this run is not waited for longer than a bus would be.
  double const latest = Timer::now() + transaction.address.busTimeout() / 1e3;
  timer_.startAt(end_.empty() ? std::min(origin_ + nextTime(), latest) : Timer::now());
}

void ReplayTransport::seek(Smbus::Transaction const& transaction) {
  auto const from = transactions_.begin() + static_cast<std::ptrdiff_t>(next_);
  auto const found = std::find_if(from, transactions_.end(), [&](RecordedTransaction const& one) {
    return isSameQuestion(one.record.transaction, transaction);
  });
  if (found != transactions_.end()) {
    next_ = static_cast<std::size_t>(found - transactions_.begin());
  }
}

std::string ReplayTransport::obstacle(Smbus::Transaction const& transaction) const {
  bool const isOver = next_ == transactions_.size();
  RecordedTransaction const& next = transactions_[isOver ? next_ - 1 : next_];
  TransactionRecord const& record = next.record;
  std::string const where = file_ + ":" + std::to_string(next.line) + ": ";
  if (isOver) {
    return where + "the recording ends here" + (isCut_ ? "; the file's last line is cut" : "");
  }
  bool const isSame = isSameQuestion(record.transaction, transaction) &&
                      (isTrace_ || record.transaction.readLength == transaction.readLength);
  if (!isSame) {
    return where +
           (isTrace_
                ? "from here on there is no answer to the request (" + described(transaction) + ")"
                : "the recorded request (" + described(record.transaction) +
                      ") is not the one that is asked for (" + described(transaction) + ")");
  }
  if (!next.unknown.empty() || isKnown(record, transaction.readLength)) {
    return next.unknown.empty() ? "" : where + next.unknown;
  }
  return where + "only " + std::to_string(record.read.length) +
         " bytes of the answer are known, of " + std::to_string(transaction.readLength) +
         " that are asked for";
}

double ReplayTransport::nextTime() const {
  RecordedTransaction const& next = transactions_[next_];
  double const first = next.record.time;
  return repeated_ == 0 ? first : first + (next.until - first) / next.repeats * repeated_;
}

void ReplayTransport::finish() {
  if (!end_.empty()) {
    if (auto const onEnd = std::exchange(onEnd_, {})) {
      onEnd(end_);
    }
    return sink_->answerIs(
        ticket_, Smbus::Reply::failed(Smbus::ErrorKind::busGone, Kex::String8(std::string(end_))));
  }
  RecordedTransaction const& answered = transactions_[next_];
  TransactionRecord const& record = answered.record;
  bool const isLast = repeated_ == answered.repeats;
  next_ += std::size_t{isLast};
  repeated_ = isLast ? 0 : repeated_ + 1;
  sink_->answerIs(ticket_, {.isOk = record.isOk,
                            .read = record.read,
                            .error = record.error,
                            .failure = Kex::String8(std::string_view(record.failure))});
}

}  // namespace Agent
