// A slot whose changes are printed as they happen.
#include "agent/slots/WatchedSlot.h"

#include <iostream>
#include <utility>

#include "agent/recording/TransactionLog.h"
#include "agent/recording/Transcript.h"
#include "agent/report/Report.h"
#include "host/kex/time/ActivityManager.h"

namespace Agent {

namespace {

double now() { return Kex::activityManager().config().clock()->time(); }

}  // namespace

WatchedSlot::WatchedSlot(std::string const& name, std::optional<std::string> source,
                         Open const& open, Plugin const& plugin, Reporting& reporting)
    : source_(std::move(source)),
      reporting_(reporting),
      slot_(name, open([this](std::string const& why) { end(why); }), plugin) {
  slot_.onSupplyIs([this](Supply const& supply) { handleSupply(supply); });
  slot_.observerIs(this);
  if (reporting_.publisher != nullptr) {
    // What an earlier run may have left is not known to be true any more.
    reporting_.publisher->fdlDel(name);
  }
}

void WatchedSlot::handleSupply(Supply const& supply) {
  Shown shown{.verdict = supply.verdict,
              .serialNumber = supply.product ? supply.product->serialNumber() : Kex::String8(),
              .fdl = supply.fdl};
  if (shown_ == shown) {
    return;
  }
  shown_ = std::move(shown);
  publish(supply);
  if (!reporting_.isJson) {
    print(supplyLine(now(), slot_.name(), supply));
    return;
  }
  JsonObject object;
  object.add("time", now()).add("slot", slot_.name()).add("event", "supply").add("source", source_);
  print(addSupply(object, supply).text());
}

void WatchedSlot::handleTransaction(Smbus::Client const& client,
                                    Smbus::Transaction const& transaction,
                                    Smbus::Reply const& reply) {
  if (reporting_.recorder == nullptr && !reporting_.isTranscript) {
    return;
  }
  TransactionRecord const record = recordOf(client, transaction, reply);
  if (reporting_.recorder != nullptr) {
    reporting_.ledger.attempt([&] { reporting_.recorder->recordIs(slot_.name(), record); });
  }
  if (reporting_.isTranscript) {
    print(reporting_.isJson ? transactionJson(slot_.name(), record).text()
                            : transactionLine(slot_.name(), record));
  }
}

void WatchedSlot::end(std::string const& why) {
  slot_.stop();
  complain(slot_.name() + ": " + why);
}

void WatchedSlot::publish(Supply const& supply) {
  if (reporting_.publisher == nullptr) {
    return;
  }
  reporting_.ledger.attempt([&] {
    if (supply.verdict == Verdict::identified) {
      reporting_.publisher->fdlIs(slot_.name(), supply.fdl.view());
    } else {
      reporting_.publisher->fdlDel(slot_.name());
    }
  });
}

void WatchedSlot::print(std::string const& line) const {
  std::cout << line << '\n';
  if (reporting_.isLive) {
    std::cout.flush();
  }
}

}  // namespace Agent
