// What somebody else may do to an identifier, by its methods and by name.
#include "tests/support/OutsideActs.h"

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

/// A request by name to attribute `id`; one that is refused does nothing.
void request(ActedOn const& on, AttributeId id, Kex::U8 code, Ptr<GenericIf> const& value) {
  auto const adapter = Kex::KexType::genericIf(Ptr<Kex::PtrInterface>(on.identifier), false);
  try {
    adapter->access({.id = id, .code = code, .value = value.ptr()});
  } catch (Kex::Exception const&) {
    // The slot's state is what counts.
  }
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

auto notifications(bool on) {
  return [on](ActedOn const& who) { who.identifier->hasNotificationActiveIs(on); };
}

auto framework(bool on) {
  return [on](ActedOn const& who) { who.identifier->kexFwkActivityIs(on); };
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

void startRequests(ActedOn const& on) {
  on.identifier->checkSupplyRequest()->activeIs(true);
  on.identifier->pollForInsertionRequest()->activeIs(true);
}

void withdrawRequests(ActedOn const& on) {
  on.identifier->pollForInsertionRequest()->activeIs(false);
  on.identifier->identifySupplyRequest()->activeIs(false);
  on.identifier->checkSupplyRequest()->activeIs(false);
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

std::vector<Act> outsideActs() {
  auto const clock = Kex::activityManager().config().clock();
  return {
      {"notifier null and back", both(notifierBeing(nullptr), notifierBeing(clock))},
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
      {"derivedConstructed 0 and 1",
       both(writing(0x217, holderOf(false)), writing(0x217, holderOf(true)))},
      {"mfrId", writing(0x20e, holderOf(Kex::String8("EMERSON")))},
      {"no mfrId", writing(0x20e, holderOf(Kex::String8("")))},
      {"buffers gone", dropBuffers},
      {"buffers gone and made", both(dropBuffers, buffersBeing(17))},
      {"larger buffers", buffersBeing(20)},
      {"buffers of one byte", buffersBeing(1)},
      {"poll request replaced",
       [](ActedOn const& on) { on.identifier->pollForInsertionRequestIs(on.vorn->newRequest()); }},
      {"identify request replaced",
       [](ActedOn const& on) { on.identifier->identifySupplyRequestIs(on.vorn->newRequest()); }},
      {"check request gone and back", takeCheckRequestAway},
      {"requests started", startRequests},
      {"requests withdrawn", withdrawRequests},
      {"completions", completeRequests},
      {"off and on", both(notifications(false), notifications(true))},
      {"framework off, off and on, framework on", both(both(framework(false), notifications(false)),
                                                       both(notifications(true), framework(true)))},
  };
}

}  // namespace busTest
