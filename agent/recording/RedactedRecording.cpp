// A recording that was read, without the serial numbers.
#include <utility>

#include "agent/base/Error.h"
#include "agent/base/JsonDocument.h"
#include "agent/recording/Recording.h"
#include "agent/recording/Redactor.h"

namespace Agent {

namespace {

/// Gives a slot's transactions and events, which come in the order in which they are in `from`, the
/// form that they are told in.
class SlotSink final : public RecordingSink {
 public:
  /// Both must outlive the sink; what `to` had goes.
  SlotSink(RecordedSlot const& from, RecordedSlot& to) : event_(from.events.begin()), to_(to) {
    to_.transactions.clear();
    to_.events.clear();
  }

  /// Where the event stands that is told next.
  std::size_t nextLine() const { return event_->line; }

  void transactionIs(RecordedTransaction const& transaction) override {
    to_.transactions.push_back(transaction);
  }
  void lineIs(std::string const& line) override {
    RecordedEvent event = *event_++;
    event.object = parseJson(line);
    if (event.event == Recording::kStart && to_.transactions.empty()) {
      to_.beginning = beginningFrom(JsonValue(event.object, ""));
    }
    to_.events.push_back(std::move(event));
  }

 private:
  std::vector<RecordedEvent>::const_iterator event_;
  RecordedSlot& to_;
};

/// Tells `sink` of all that `slot` has, in the order of the file.
void tell(RecordedSlot const& slot, RecordingSink& sink) {
  auto event = slot.events.begin();
  auto const tellEventsBefore = [&](std::size_t line) {
    for (; event != slot.events.end() && event->line < line; ++event) {
      sink.lineIs(event->object.dump());
    }
  };
  for (RecordedTransaction const& transaction : slot.transactions) {
    tellEventsBefore(transaction.line);
    sink.transactionIs(transaction);
  }
  tellEventsBefore(slot.lastLine + 1);
}

}  // namespace

Recording Recording::redacted(Pseudonyms const& pseudonyms) const {
  if (isTrace_) {
    throw Failure(file_ +
                  ": a kernel trace does not tell who asked, so nobody knows where in it serial "
                  "numbers are; only what --record wrote can be redacted");
  }
  Recording other = *this;
  for (auto& [name, slot] : other.slots_) {
    RecordedSlot const& from = slots_.at(name);
    SlotSink sink(from, slot);
    Redactor redactor(pseudonyms, sink);
    try {
      tell(from, redactor);
      redactor.flush();
    } catch (UsageError const& error) {
      throw Failure(file_ + ":" + std::to_string(sink.nextLine()) + ": " + error.what());
    }
  }
  return other;
}

}  // namespace Agent
