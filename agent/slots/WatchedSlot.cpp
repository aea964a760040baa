// A slot whose changes are printed as they happen.
#include "agent/slots/WatchedSlot.h"

#include <unistd.h>

#include <iostream>
#include <utility>

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
      began_(now()),
      steadiness_([this](std::string const& text) { printSteadiness("unsteady " + text); },
                  [this] {
                    printSteadiness("steady");
                    print(supplyLine(now(), slot_.name(), *slot_.supply()));
                  }),
      slot_(name, open([this](std::string const& why) { end(why); }), plugin) {
  slot_.onSupplyIs([this](Supply const& supply) { handleSupply(supply); });
  slot_.observerIs(this);
}

WatchedSlot::~WatchedSlot() { recordStop({}); }

void WatchedSlot::actIs(Act const& act) {
  record(event("act", now())
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
  if (reporting_.isJson || reporting_.recorder != nullptr) {
    JsonObject object = event("supply", now());
    json = addSupply(object.add("source", source_), supply).text();
    record(json);
  }
  if (reporting_.isJson) {
    print(json);
  } else {
    printText(supply, former);
  }
  if (reporting_.onChange) {
    reporting_.onChange();
  }
}

void WatchedSlot::printText(Supply const& supply, std::optional<Shown> const& former) {
  bool const isChange = former && former->verdict != supply.verdict;
  if (isChange) {
    steadiness_.change();
  }
  if (!steadiness_.isUnsteady()) {
    bool const isLoss = isChange && former->verdict == Verdict::identified;
    print(supplyLine(now(), slot_.name(), supply), isLoss ? Priority::warning : Priority::info);
  }
}

void WatchedSlot::printSteadiness(std::string const& text) const {
  print(std::string(Kex::format("%.3f ", now()).view()) + slot_.name() + ' ' + text,
        Priority::warning);
}

void WatchedSlot::handleTransaction(Smbus::Client const& client,
                                    Smbus::Transaction const& transaction,
                                    Smbus::Reply const& reply) {
  if (reporting_.meter != nullptr) {
    reporting_.meter->transactionIs(slot_.name(), reply);
  }
  if (reporting_.recorder == nullptr && !reporting_.isTranscript) {
    return;
  }
  TransactionRecord const ended = recordOf(client, transaction, reply);
  if (reporting_.recorder != nullptr) {
    record(recordingLine(slot_.name(), ended));
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

void WatchedSlot::record(std::string const& line) {
  if (reporting_.recorder == nullptr || recorded_ == Recorded::stop) {
    return;
  }
  if (std::exchange(recorded_, Recorded::start) == Recorded::nothing) {
    record(event("start", began_)
               .add("source", source_)
               .add("pollInterval", slot_.pollInterval())
               .add("reviewInterval", slot_.reviewInterval())
               .text());
  }
  reporting_.ledger.attempt([&] { reporting_.recorder->lineIs(line); });
}

void WatchedSlot::recordStop(std::optional<std::string> const& why) {
  record(event("stop", now()).add("reason", why).text());
  recorded_ = Recorded::stop;
}

void WatchedSlot::print(std::string const& line, Priority priority) const {
  if (reporting_.recorder != nullptr && reporting_.recorder->isOut()) {
    return;
  }
  eraseProgress();
  std::cout << priorityPrefix(STDOUT_FILENO, priority) << line << '\n';
  if (reporting_.isLive) {
    std::cout.flush();
  }
}

}  // namespace Agent
