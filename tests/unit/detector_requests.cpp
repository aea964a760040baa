// Requests, their bus, and what holds them: no status is lost or doubled, no late answer does harm.
#include "host/kex/Exception.h"
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Lines;
using busTest::Slot;
using Hardware::VornOp;
using Hardware::VornRequest;
using Kex::Request;

/// A transport that answers when it is told to.
class ManualTransport final : public Smbus::Transport {
 public:
  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override {
    started.push_back(transaction);
    tickets.push_back(ticket);
    sink_ = &sink;
  }
  /// Answers the transaction `index`: with no bytes, that it failed.
  void answer(std::size_t index, std::initializer_list<Kex::U8> bytes) {
    Smbus::Reply reply{.isOk = bytes.size() != 0, .read = {}, .failure = {}};
    std::ranges::copy(bytes, reply.read.bytes.begin());
    reply.read.length = static_cast<Kex::U8>(bytes.size());
    sink_->answerIs(tickets[index], reply);
  }

  std::vector<Smbus::Transaction> started;
  std::vector<Kex::U64> tickets;

 private:
  Smbus::AnswerSink* sink_ = nullptr;
};

/// Keeps the statuses that are delivered; starts the request again `restarts` times.
class Listener final : public VornRequest::Handler {
 public:
  void handleStatus(VornRequest& request) override {
    EXPECT_FALSE(isInside_);
    isInside_ = true;
    seen.push_back(request.status());
    if (restarts > 0) {
      --restarts;
      request.activeIs(true);
    }
    isInside_ = false;
  }

  std::vector<int> seen;
  int restarts = 0;

 private:
  bool isInside_ = false;
};

class DetectorRequests : public testing::Test {
 protected:
  Kex::Ptr<VornRequest> newRequest(Kex::U32 readLength = 4) {
    auto const request = vorn->newRequest();
    request->handlerIs(&listener);
    request->doMakeOp(VornOp::kRead, address.encoded(), buffer->data(), readLength, 1, 1, 1);
    return request;
  }
  static void run() { Kex::activityManager().runPending(); }
  using Statuses = std::vector<int>;

  ManualTransport* transport = new ManualTransport;
  Kex::Ptr<Hardware::Vorn> vorn = Kex::make<Hardware::Vorn>(
      Kex::make<Smbus::Bus>(std::unique_ptr<Smbus::Transport>(transport)));
  Kex::Ptr<Hal::Buf> buffer = [] {
    auto made = Kex::make<Hal::Buf>(40U);
    made->strIs("abcdefgh");
    return made;
  }();
  Smbus::VornAddress address{0x3E8B058};
  Listener listener;
};

TEST_F(DetectorRequests, deliverEachStatusOnce) {
  auto const request = newRequest();
  listener.restarts = 2;
  request->activeIs(true);
  EXPECT_EQ(request->status(), Request::kRunning);
  transport->answer(0, {});
  EXPECT_EQ(listener.seen, Statuses{});
  run();
  transport->answer(1, {});
  transport->answer(1, {});
  run();
  transport->answer(2, {1});
  run();
  run();
  EXPECT_EQ(listener.seen, (Statuses{Request::kFailed, Request::kFailed, Request::kSucceeded}));
  EXPECT_EQ(request->status(), Request::kIdle);
  EXPECT_FALSE(request->active());
  EXPECT_EQ(request->started(), 3U);

  // One that is pending is discarded; one that holds no transaction fails.
  request->activeIs(true);
  transport->answer(3, {1});
  request->activeIs(false);
  run();
  EXPECT_EQ(listener.seen.size(), 3U);
  auto const empty = vorn->newRequest();
  empty->handlerIs(&listener);
  empty->activeIs(true);
  EXPECT_EQ(listener.seen.size(), 3U);
  run();
  EXPECT_EQ(listener.seen.back(), Request::kFailed);
  EXPECT_EQ(transport->started.size(), 4U);
}

TEST_F(DetectorRequests, waitTheirTurnAndMissLateAnswers) {
  auto const first = newRequest(1);
  auto const second = newRequest(2);
  auto third = newRequest(3);
  for (auto const& request : {first, second, third}) {
    request->activeIs(true);
  }
  second->activeIs(false);
  first->activeIs(false);
  first->activeIs(true);
  ASSERT_EQ(transport->started.size(), 1U);
  transport->answer(0, {9, 9});
  run();
  EXPECT_EQ(listener.seen, Statuses{});
  ASSERT_EQ(transport->started.size(), 2U);
  EXPECT_EQ(transport->started[1].readLength, 3);
  third = nullptr;
  transport->answer(0, {9, 9});
  EXPECT_EQ(transport->started.size(), 2U);
  transport->answer(1, {9, 9});
  ASSERT_EQ(transport->started.size(), 3U);
  EXPECT_EQ(transport->started[2].readLength, 1);
  EXPECT_EQ(buffer->str(), "abcdefgh");
  transport->answer(2, {7});
  run();
  EXPECT_EQ(listener.seen, Statuses{Request::kSucceeded});
  EXPECT_EQ(buffer->str(), "\7bcdefgh");
}

TEST_F(DetectorRequests, fillTheWholeReadLength) {
  struct {
    Kex::U32 length;
    std::initializer_list<Kex::U8> answer;
    std::string_view buffer;
  } const rows[] = {
      {4, {'1', '2', '3', '4'}, "1234efgh"},
      {4, {'1'}, {"1\0\0\0efgh", 8}},
      {2, {'1', '2', '3', '4'}, "12cdefgh"},
  };
  for (auto const& row : rows) {
    buffer->strIs("abcdefgh");
    auto const request = newRequest(row.length);
    request->activeIs(true);
    transport->answer(transport->tickets.size() - 1, row.answer);
    run();
    EXPECT_EQ(buffer->str().view(), row.buffer);
    EXPECT_EQ(request->lastRead().length, row.length);
  }
  // A buffer that became shorter takes what fits.
  auto const request = newRequest(33);
  request->activeIs(true);
  buffer->sizeIs(1);
  transport->answer(3, {'x', 'y'});
  EXPECT_EQ(buffer->str(), "x");
}

TEST_F(DetectorRequests, takeOperationsThatFitABlock) {
  auto const request = newRequest();
  auto const make = [&](VornOp::Opcode opcode, Kex::U32 length) {
    request->doMakeOp(opcode, address.encoded(), buffer->data(), length, 1, 1, 1);
  };
  EXPECT_THROW(make(VornOp::kRead, 0), Kex::RangeException);
  EXPECT_THROW(make(VornOp::kRead, 34), Kex::RangeException);
  EXPECT_THROW(make(VornOp::kWrite, 9), Kex::RangeException);
  EXPECT_EQ(request->operations().size(), 1U);
  request->activeIs(false);
  EXPECT_EQ(request->operations().size(), 1U);
  make(VornOp::kWrite, 2);
  // What is written is what stood there when the operation was made.
  buffer->byteIs(0, 'X');
  make(VornOp::kRead, 33);
  request->activeIs(true);
  ASSERT_EQ(transport->started.size(), 1U);
  auto const& transaction = transport->started[0];
  EXPECT_EQ(transaction.address, address);
  EXPECT_EQ(transaction.readLength, 33);
  EXPECT_EQ(
      Kex::String8(std::string(transaction.write.view().begin(), transaction.write.view().end())),
      "ab");
}

TEST(DetectorSlots, letGoOfIdentifiersWithAReadInFlight) {
  struct {
    char const* what;
    void (*letGo)(Slot&);
  } const rows[] = {
      {"deleted", [](Slot& slot) { slot.driver->identifierDel("EmersonPmbus"); }},
      {"driver gone", [](Slot& slot) { slot.driver = nullptr; }},
      {"zombie", [](Slot& slot) { slot.identifier->kexDoZombieReactors(true); }},
  };
  Slot::registry();
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  for (auto const& row : rows) {
    for (std::string const script : {"h", ".h", "..h", "...h", "....h", "....xh"}) {
      Slot slot(script);
      slot.run(0.5);
      auto const bus = slot.vorn;
      row.letGo(slot);
      auto const length = slot.identifier->identifySupplyReadBuf()->str();
      Kex::activityManager().runUntil(Slot::clock()->time() + 10);
      EXPECT_EQ(slot.verdict(), "none") << row.what << " " << script;
      EXPECT_FALSE(slot.identifier->hasNotificationActive());
      EXPECT_EQ(slot.identifier->identifySupplyReadBuf()->str(), length);
    }
  }
  EXPECT_EQ(Kex::VFPtrInterface::liveObjects(), before);
}

TEST(DetectorSlots, replaceAnIdentifierByASecondOfItsName) {
  Slot second("*");
  Slot first("h");
  first.run(0.5);
  first.driver->identifierIs("EmersonPmbus", second.identifier);
  EXPECT_FALSE(first.identifier->hasNotificationActive());
  EXPECT_EQ(first.identifier->path(), "");
  EXPECT_EQ(second.identifier->path(), "driver/EmersonPmbus");
  EXPECT_EQ(first.driver->identifier("EmersonPmbus"), second.identifier);
  // Handing over the one that it has changes nothing, and nothing is no identifier.
  first.driver->identifierIs("EmersonPmbus", second.identifier);
  EXPECT_THROW(first.driver->identifierIs("EmersonPmbus", nullptr), Kex::RangeException);
  Kex::activityManager().runUntil(Slot::clock()->time() + 2);
  EXPECT_EQ(first.timeline(), "P0");
  // Its own time began one second before the first one's, half a second before it was handed over.
  EXPECT_EQ(second.timeline(), "2P1.5 2I1.7 C1.7 unrecognised C2.7");
}

TEST(DetectorSlots, forgetTheSupplyBeforeTheNextPoll) {
  Slot slot(".....1");
  slot.run(2.2);
  EXPECT_EQ(slot.log,
            (Lines{"3 PowerSupplySlot S: Identifier::handleCheckSupplyRequest(succeeded)",
                   "failCount=0", "4 S: incomplete read by checkSupplyRequest: 1 < 2", "fdl=''",
                   "serialNum=''", "no hwError", "state=2",
                   "3 PowerSupplySlot S: Identifier::doResetIdentifier() S", "> 58:99 r8"}));
  EXPECT_FALSE(slot.identifier->idprom()->productInfo() || slot.identifier->idprom()->header());
}

TEST(DetectorSlots, bearAnExceptionOfTheirOwn) {
  Slot slot("*");
  slot.descriptorIs("stub", "P");
  slot.run(0.5);
  slot.identifier->pollForInsertionReadBufDel();
  slot.identifier->identifySupplyReadBufDel();
  slot.bus->script = "1*";
  slot.run(3.5);
  EXPECT_EQ(slot.supply().reason, "range exception: null ValidPtr");
  slot.identifier->pollForInsertionReadBufIs(17);
  slot.run(4.5);
  EXPECT_EQ(slot.verdict(), "unreadable");
  slot.identifier->identifySupplyReadBufIs(17);
  slot.run(6);
  EXPECT_EQ(
      slot.timeline(),
      "2P0 2I0.2 C0.2 identified C1.2 2unreadable 2P4.2 unreadable 2P5.2 2I5.4 C5.4 identified");
}

}  // namespace
