// The transport that plays a recording.
#include "agent/recording/ReplayTransport.h"

#include <algorithm>
#include <utility>

#include "agent/base/Error.h"
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

ReplayTransport::ReplayTransport(std::string const& place, std::function<void()> onEnd)
    : file_(place.substr(0, place.rfind('#'))),
      onEnd_(std::move(onEnd)),
      timer_([this] { finish(); }) {
  std::string const slot = file_.size() < place.size() ? place.substr(file_.size() + 1) : "";
  transactions_ = Recording(file_).transactions(slot);
}

void ReplayTransport::start(Smbus::Transaction const& transaction, Kex::U64 ticket,
                            Smbus::AnswerSink& sink) {
  if (next_ == transactions_.size()) {
    return end();
  }
  auto const& [record, line] = transactions_[next_];
  if (!isSame(transaction, record.transaction)) {
    end();
    throw Failure(file_ + ":" + std::to_string(line) + ": the recorded request (" +
                  described(record.transaction) + ") is not the one that is asked for (" +
                  described(transaction) + ")");
  }
  ticket_ = ticket;
  sink_ = &sink;
  timer_.startAt(record.time);
}

void ReplayTransport::end() const {
  if (onEnd_) {
    onEnd_();
  }
}

void ReplayTransport::finish() {
  TransactionRecord const& record = transactions_[next_++].record;
  sink_->answerIs(ticket_, {.isOk = record.isOk,
                            .read = record.read,
                            .failure = Kex::String8(std::string_view(record.failure))});
}

}  // namespace Agent
