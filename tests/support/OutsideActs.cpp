// What somebody else may do to an identifier, by its methods and by name.
#include "tests/support/OutsideActs.h"

#include <algorithm>
#include <cmath>

#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/time/ActivityManager.h"

namespace busTest {

namespace {

using Kex::AttributeId;
using Kex::GenericIf;
using Kex::holderOf;
using Kex::Ptr;

constexpr AttributeId kFirstBuf = 0x210;
constexpr AttributeId kLastBuf = 0x215;

Ptr<GenericIf> listOf(std::initializer_list<Ptr<GenericIf>> elements) {
  auto const list = Kex::make<GenericIf::List_>();
  for (auto const& element : elements) {
    list->append(element);
  }
  return list;
}

/// Does what may be refused.
template <class Work>
void attempt(Work work) {
  try {
    work();
  } catch (Kex::Exception const&) {
    // The slot's state is what counts.
  }
}

/// A request by name to attribute `id`; one that is refused does nothing.
void request(ActedOn const& on, AttributeId id, Kex::U8 code, Ptr<GenericIf> const& value) {
  auto const adapter = Kex::KexType::genericIf(Ptr<Kex::PtrInterface>(on.identifier), false);
  attempt([&] { adapter->access({.id = id, .code = code, .value = value.ptr()}); });
}

auto calling(AttributeId id, std::initializer_list<Ptr<GenericIf>> arguments = {}) {
  return [id, list = listOf(arguments)](ActedOn const& on) { request(on, id, Kex::kRead, list); };
}

auto writing(AttributeId id, Ptr<GenericIf> const& value) {
  return [id, value](ActedOn const& on) { writeByName(on, id, value); };
}

/// Both acts, one after the other.
template <class First, class Second>
auto both(First first, Second second) {
  return [=](ActedOn const& on) { first(on), second(on); };
}

auto notifierBeing(Ptr<Kex::Clock const> const& clock) {
  return [clock](ActedOn const& on) { on.identifier->notifierIs(clock); };
}

auto framework(bool on) {
  return [on](ActedOn const& who) { who.identifier->kexFwkActivityIs(on); };
}

auto notifications(bool on) {
  return [on](ActedOn const& who) { who.identifier->hasNotificationActiveIs(on); };
}

/// Writes the interval `id` by name: what is none, and then another one for a moment.
void disturbInterval(ActedOn const& on, AttributeId id, double interval) {
  for (double const seconds : {0.0, -1.0, 1e-300, double{NAN}, HUGE_VAL, interval / 4, interval}) {
    writeByName(on, id, holderOf(seconds));
  }
}

void disturbIntervals(ActedOn const& on) {
  disturbInterval(on, 0x105, on.identifier->pollInterval());
  disturbInterval(on, 0x106, on.identifier->pollDelay());
  disturbInterval(on, 0x113, on.identifier->reviewInterval());
}

/// The same, not by name.
void changeIntervals(ActedOn const& on) {
  auto& identifier = *on.identifier;
  for (double const factor : {0.25, 4.0}) {
    identifier.pollIntervalIs(factor * identifier.pollInterval());
    identifier.pollDelayIs(factor * identifier.pollDelay());
    identifier.reviewIntervalIs(factor * identifier.reviewInterval());
  }
}

void dropBuffers(ActedOn const& on) {
  for (AttributeId id = kFirstBuf; id <= kLastBuf; ++id) {
    request(on, id, Kex::kDelete, {});
  }
}

auto buffersBeing(Kex::U32 size) {
  return [size](ActedOn const& on) {
    for (AttributeId id = kFirstBuf; id <= kLastBuf; ++id) {
      writeByName(on, id, listOf({holderOf(size)}));
    }
  };
}

void dropRecords(ActedOn const& on) {
  on.identifier->commonAreaBufDel();
  on.identifier->productInfoHeaderBufDel();
  on.identifier->productInfoBufDel();
  on.identifier->idpromDel();
}

void replaceRecords(ActedOn const& on) {
  on.identifier->commonAreaBufIs(9);
  on.identifier->productInfoHeaderBufIs(3);
  on.identifier->productInfoBufIs(1);
  on.identifier->idpromIs();
}

void startRequests(ActedOn const& on) {
  on.identifier->checkSupplyRequest()->activeIs(true);
  on.identifier->pollForInsertionRequest()->activeIs(true);
}

void withdrawRequests(ActedOn const& on) {
  on.identifier->pollForInsertionRequest()->activeIs(false);
  on.identifier->identifySupplyRequest()->activeIs(false);
  on.identifier->checkSupplyRequest()->activeIs(false);
}

void loadRequests(ActedOn const& on) {
  auto const buffer = Kex::make<Hal::Buf>(4U);
  buffer->lenIs(4);
  for (auto const& request :
       {on.identifier->pollForInsertionRequest(), on.identifier->identifySupplyRequest(),
        on.identifier->checkSupplyRequest()}) {
    request->doMakeOp(Hardware::VornOp::kRead, 0x58, buffer->data(), buffer->len(), 1, 1, 1);
  }
}

void takeHandlersAway(ActedOn const& on) {
  on.identifier->pollForInsertionRequest()->handlerIs(nullptr);
  on.identifier->identifySupplyRequest()->handlerIs(nullptr);
  on.identifier->checkSupplyRequest()->handlerIs(nullptr);
}

void takeCheckRequestAway(ActedOn const& on) {
  auto const request = on.identifier->checkSupplyRequest();
  on.identifier->checkSupplyRequestDel();
  on.identifier->checkSupplyRequestIs(request);
}

void completeRequests(ActedOn const& on) {
  on.identifier->doPollForInsertionRequestComplete(true);
  on.identifier->doIdentifySupplyRequestComplete(true);
  on.identifier->doCheckSupplyRequestComplete(true);
}

}  // namespace

void writeByName(ActedOn const& on, AttributeId id, Ptr<GenericIf> const& value) {
  request(on, id, Kex::kWrite, value);
}

std::vector<Switch> switches() {
  return {
      {"notifications", [](ActedOn const& who, bool on) { notifications(on)(who); }},
      {"framework activity", [](ActedOn const& who, bool on) { framework(on)(who); }},
      {"derivedConstructed",
       [](ActedOn const& who, bool on) { writeByName(who, 0x217, holderOf(on)); }},
      {"initialized", [](ActedOn const& who, bool on) { who.identifier->initializedIs(on); }},
      {"notifier",
       [clock = Kex::activityManager().config().clock()](ActedOn const& who, bool on) {
         who.identifier->notifierIs(on ? clock : nullptr);
       }},
      {"isRegisteredNotifiee",
       [](ActedOn const& who, bool on) { who.identifier->isRegisteredNotifieeIs(on); }},
      {"living reactors",
       [](ActedOn const& who, bool on) { who.identifier->kexDoZombieReactors(!on); }},
  };
}

std::vector<Act> outsideActs() {
  auto const clock = Kex::activityManager().config().clock();
  std::vector<Act> acts = {
      {"another clock and back",
       [clock](ActedOn const& on) {
         both(notifierBeing(Kex::make<Kex::Clock>("another")), notifierBeing(clock))(on);
       }},
      {"the same clock", notifierBeing(clock)},
      {"notifier by name", writing(0x207, holderOf(clock))},
      {"doSetupCheckSupplyRequest", calling(0x216, {holderOf(true)})},
      {"doInitialize", calling(0x11b)},
      {"doResetIdentifier", calling(0x120)},
      {"doResetIdentifier directly", [](ActedOn const& on) { on.identifier->doResetIdentifier(); }},
      {"handlePollForInsertionRequest", calling(0x11d)},
      {"handleIdentifySupplyRequest", calling(0x11e)},
      {"handleCheckSupplyRequest", calling(0x11f)},
      {"handleConstructed", calling(0x218)},
      {"mfrId", writing(0x20e, holderOf(Kex::String8("EMERSON")))},
      {"no mfrId", writing(0x20e, holderOf(Kex::String8("")))},
      {"intervals by name", disturbIntervals},
      {"intervals", changeIntervals},
      {"no deadline", [](ActedOn const& on) { on.identifier->timeMinIs(HUGE_VAL); }},
      {"buffers gone", dropBuffers},
      {"buffers gone and made", both(dropBuffers, buffersBeing(17))},
      {"larger buffers", buffersBeing(20)},
      {"buffers of one byte", buffersBeing(1)},
      {"records gone", dropRecords},
      {"records replaced", replaceRecords},
      {"poll request replaced",
       [](ActedOn const& on) { on.identifier->pollForInsertionRequestIs(on.vorn->newRequest()); }},
      {"identify request replaced",
       [](ActedOn const& on) { on.identifier->identifySupplyRequestIs(on.vorn->newRequest()); }},
      {"check request gone and back", takeCheckRequestAway},
      {"requests without a handler", takeHandlersAway},
      {"requests started", startRequests},
      {"requests withdrawn", withdrawRequests},
      {"requests loaded", loadRequests},
      {"completions", completeRequests},
      {"framework off, off and on, framework on", both(both(framework(false), notifications(false)),
                                                       both(notifications(true), framework(true)))},
  };
  std::ranges::transform(switches(), std::back_inserter(acts), [](Switch const& one) {
    return Act{one.what + std::string(" off and on"), [be = one.be](ActedOn const& on) {
                 be(on, false);
                 be(on, true);
               }};
  });
  for (Act& act : acts) {
    act.happen = [happen = std::move(act.happen)](ActedOn const& on) {
      attempt([&] { happen(on); });
    };
  }
  return acts;
}

}  // namespace busTest
