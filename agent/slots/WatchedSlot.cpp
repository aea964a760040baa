// A slot whose changes are printed as they happen.
#include "agent/slots/WatchedSlot.h"

#include <unistd.h>

#include <iostream>
#include <utility>

#include "agent/base/OutputReader.h"
#include "agent/base/Terminal.h"
#include "agent/recording/TransactionLog.h"
#include "agent/recording/Transcript.h"
#include "agent/report/Report.h"
#include "host/kex/base/Format.h"
#include "host/kex/time/ActivityManager.h"

namespace Agent {

namespace {

double now() { return Kex::activityManager().config().clock()->time(); }

}  // namespace

WatchedSlot::WatchedSlot(std::string const& name, std::optional<std::string> source,
                         Open const& open, Plugin const& plugin, Reporting& reporting)
    : source_(std::move(source)),
      reporting_(reporting),
      steadiness_([this](std::string const& text) { printSteadiness("unsteady " + text); },
                  [this] {
                    printSteadiness("steady");
                    if (!reporting_.isJson) {
                      print(supplyLine(now(), slot_.name(), *slot_.supply()));
                    }
                  }),
      slot_(name, open([this](std::string const& why) { end(why); }), plugin) {
  slot_.onSupplyIs([this](Supply const& supply) { handleSupply(supply); });
  slot_.observerIs(this);
  beginning_ = slot_.beginning();
  if (reporting_.incidents != nullptr) {
    flight_.emplace(name, *reporting_.incidents, reporting_.pseudonyms, reporting_.ledger,
                    [this](Beginning const& beginning) { return startLine(beginning); });
  }
  if (reporting_.pseudonyms != nullptr) {
    redactor_.emplace(*reporting_.pseudonyms, static_cast<RecordingSink&>(*this));
  }
}

WatchedSlot::~WatchedSlot() { recordStop({}); }

void WatchedSlot::actIs(Act const& act) {
  happen(event("act", now())
             .add("action", act.action)
             .add("supply", act.supply)
             .add("transactions", act.transactions)
             .text());
}

void WatchedSlot::handleSupply(Supply const& supply) {
  if (reporting_.meter != nullptr) {
    reporting_.meter->supplyIs(slot_.name(), supply);
  }
  Shown shown{.verdict = supply.verdict,
              .serialNumber = supply.product ? supply.product->serialNumber() : Kex::String8(),
              .fdl = supply.fdl};
  if (shown_ == shown) {
    return;
  }
  auto const former = std::exchange(shown_, std::move(shown));
  if (reporting_.publisher != nullptr) {
    reporting_.publisher->supplyIs(slot_.name(), supply);
  }
  std::string json;
  if (reporting_.isJson || reporting_.recorder != nullptr || flight_) {
    JsonObject object = event("supply", now());
    json = addSupply(object.add("source", source_), supply).text();
  }
  if (RecordingSink* const sink = recording()) {
    sink->lineIs(json);
  }
  bool const isChange = former && former->verdict != supply.verdict;
  if (isChange) {
    steadiness_.change();
  }
  if (flight_) {
    flight_->supplyIs(supply.verdict, json, isChange && steadiness_.isUnsteady());
  }
  if (reporting_.isJson) {
    print(json);
  } else if (!steadiness_.isUnsteady()) {
    bool const isLoss = isChange && former->verdict == Verdict::identified;
    print(supplyLine(now(), slot_.name(), supply), isLoss ? Priority::warning : Priority::info);
  }
  if (reporting_.onChange) {
    reporting_.onChange();
  }
}

void WatchedSlot::printSteadiness(std::string const& text) const {
  if (!reporting_.isJson) {
    print(std::string(Kex::format("%.3f ", now()).view()) + slot_.name() + ' ' + text,
          Priority::warning);
  }
}

void WatchedSlot::handleTransaction(Smbus::Client const& client,
                                    Smbus::Transaction const& transaction,
                                    Smbus::Reply const& reply) {
  if (reporting_.meter != nullptr) {
    reporting_.meter->transactionIs(slot_.name(), reply);
  }
  if (flight_) {
    flight_->transactionIs(client, transaction, reply, [this] { return slot_.beginning(); });
  }
  if (reporting_.recorder == nullptr && !reporting_.isTranscript) {
    return;
  }
  TransactionRecord const ended = recordOf(client, transaction, reply);
  if (RecordingSink* const sink = recording()) {
    sink->transactionIs({.record = ended, .line = 0});
  }
  if (reporting_.isTranscript) {
    print(reporting_.isJson ? transactionJson(slot_.name(), ended).text()
                            : transactionLine(slot_.name(), ended));
  }
}

void WatchedSlot::end(std::string const& why) {
  slot_.stop();
  recordStop(why);
  complain(slot_.name() + ": " + why);
}

JsonObject WatchedSlot::event(char const* kind, double time) const {
  JsonObject object;
  object.add("time", time).add("slot", slot_.name()).add("event", kind);
  return object;
}

void WatchedSlot::happen(std::string const& line) {
  if (RecordingSink* const sink = recording()) {
    sink->lineIs(line);
  }
  if (flight_) {
    flight_->lineIs(line);
  }
}

std::string WatchedSlot::startLine(Beginning const& beginning) const {
  JsonObject start = event("start", beginning.time);
  return addBeginning(start.add("source", source_), beginning).text();
}

RecordingSink* WatchedSlot::recording() {
  if (reporting_.recorder == nullptr || recorded_ == Recorded::stop) {
    return nullptr;
  }
  RecordingSink* const sink = redactor_ ? static_cast<RecordingSink*>(&*redactor_) : this;
  if (std::exchange(recorded_, Recorded::start) == Recorded::nothing) {
    // The intervals that are set after the slot was made hold from its beginning.
    beginning_.timings = slot_.beginning().timings;
    sink->lineIs(startLine(beginning_));
  }
  return sink;
}

void WatchedSlot::transactionIs(RecordedTransaction const& transaction) {
  reporting_.ledger.attempt(
      [&] { reporting_.recorder->recordIs(slot_.name(), transaction.record); });
}

void WatchedSlot::lineIs(std::string const& line) {
  reporting_.ledger.attempt([&] { reporting_.recorder->lineIs(line); });
}

void WatchedSlot::recordStop(std::optional<std::string> const& why) {
  if (recorded_ == Recorded::stop) {
    return;
  }
  happen(event("stop", now()).add("reason", why).text());
  if (redactor_ && reporting_.recorder != nullptr) {
    redactor_->flush();
  }
  recorded_ = Recorded::stop;
}

void WatchedSlot::print(std::string const& line, Priority priority) const {
  if (reporting_.recorder != nullptr && reporting_.recorder->isOut()) {
    return;
  }
  eraseProgress();
  std::cout << priorityPrefix(STDOUT_FILENO, priority) << line << '\n';
  if (reporting_.isLive) {
    reporting_.output.attempt([] {
      // Where nobody reads any more, the run is about to end.
      if (hasReader(STDOUT_FILENO)) {
        flushOut();
      }
    });
  }
}

}  // namespace Agent
