// Requests: every terminal status reaches its handler exactly once, no late answer does harm.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "agent/recording/TransactionLog.h"
#include "host/hardware/Vorn.h"
#include "host/kex/base/Exception.h"
#include "host/kex/time/ActivityManager.h"

namespace {

using Hardware::VornOp;
using Hardware::VornRequest;
using Kex::Ptr;
using Kex::U32;
using Kex::U8;

void runPending() { Kex::activityManager().runPending(); }

/// What a transport was asked.
struct Asked {
  Smbus::Transaction transaction;
  Kex::U64 ticket;
  Smbus::AnswerSink* sink;
  void answer(bool isOk, std::vector<U8> const& bytes = {}) const {
    Smbus::Reply reply = isOk ? Smbus::Reply{.isOk = true, .read = {}, .failure = {}}
                              : Smbus::Reply::failed(Smbus::ErrorKind::noAcknowledge);
    std::ranges::copy(bytes, reply.read.bytes.begin());
    reply.read.length = static_cast<U8>(bytes.size());
    sink->answerIs(ticket, reply);
  }
};

/// Leaves the answers to the test.
struct HeldTransport final : Smbus::Transport {
  explicit HeldTransport(std::vector<Asked>& to) : asked(to) {}
  void start(Smbus::Transaction const& what, Kex::U64 ticket, Smbus::AnswerSink& sink) override {
    asked.push_back({what, ticket, &sink});
  }
  std::vector<Asked>& asked;
};

/// A request with an operation to read 8 bytes; its handler writes a log.
struct Scene : VornRequest::Handler {
  Scene() {
    request->handlerIs(this);
    buffer->lenIs(8);
    load(*request);
  }
  virtual ~Scene() = default;
  void load(VornRequest& loaded) const {
    loaded.doMakeOp(VornOp::kRead, 0x58, buffer->data(), 8, 1, 8, 1);
  }
  bool isOwnDoing(VornRequest&) override { return isOwn; }
  void handleStatus(VornRequest& from) override {
    log += '!' + std::to_string(from.status());
    if (restarts > 0) {
      --restarts;
      from.activeIs(true);
    }
  }

  std::vector<Asked> asked;
  Ptr<Smbus::Bus> bus = Kex::make<Smbus::Bus>(std::make_unique<HeldTransport>(asked));
  Ptr<Hardware::Vorn> vorn = Kex::make<Hardware::Vorn>(bus);
  Ptr<VornRequest> request = vorn->newRequest();
  Ptr<Hal::Buf> buffer = Kex::make<Hal::Buf>(17U);
  std::string log;
  unsigned restarts = 0;  ///< from within the handler
  bool isOwn = true;      ///< what is done to the request is the handler's doing
};
struct HardwareVornRequest : testing::Test, Scene {};

TEST(HardwareVornRequests, deliverEachTerminalStatusExactlyOnce) {
  // s start, w withdraw, S and F the next transaction succeeds or fails, o the first one answers
  // once more, t the loop's turn, a start again at each of the next two deliveries, n nobody is
  // told, d destroy, l load, e what follows is somebody else's doing. The log has the status after
  // each step, and those delivered behind a !.
  struct {
    char const* steps;
    char const* log;
  } const rows[] = {
      {"st", "11"},         {"sStt", "13!300"},
      {"sFtt", "12!200"},   {"sSot", "133!30"},
      {"sSwt", "1300"},     {"swSt", "1000"},
      {"ssSt", "1111"},     {"ssSFt", "1112!20"},
      {"sSsFt", "1312!20"}, {"swsFSt", "10113!30"},
      {"nsSt", "0130"},     {"sdSt", "1---"},
      {"sSdt", "13--"},     {"asFtFtFtt", "012!212!212!200"},
      {"seSt", "113!30"},   {"selSt", "11000"},
      {"sesSt", "11000"},   {"senSt", "11000"},
  };
  for (auto const& row : rows) {
    Scene scene;
    auto& [asked, bus, vorn, request, buffer, log, restarts, isOwn] = scene;
    std::size_t answered = 0;
    for (char const* step = row.steps; *step != 0; ++step) {
      switch (*step) {
        case 's': request->activeIs(true); break;
        case 'w': request->activeIs(false); break;
        case 'S': asked.at(answered++).answer(true); break;
        case 'F': asked.at(answered++).answer(false); break;
        case 'o': asked.at(0).answer(false); break;
        case 't': runPending(); break;
        case 'a': restarts = 2; break;
        case 'n': request->handlerIs(nullptr); break;
        case 'l': scene.load(*request); break;
        case 'e': isOwn = false; break;
        default: request = nullptr;
      }
      log += request ? std::to_string(request->status()) : "-";
      EXPECT_TRUE(!request || request->active() == (request->status() != Kex::Request::kIdle));
    }
    EXPECT_EQ(log, row.log) << row.steps;
  }
}

TEST_F(HardwareVornRequest, writesTheWholeReadLengthAndNoMore) {
  struct {
    std::vector<U8> reply;
    std::string buffer;
  } const rows[] = {
      {{2, 'a', 'b'}, {"\2ab\0\0\0\0\0", 8}},
      {{}, std::string(8, '\0')},
      {{9, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i'}, {"\11abcdefg", 8}},
  };
  Agent::TransactionLog seen;
  bus->observerIs(&seen);
  auto const text = [](std::span<U8 const> bytes) {
    return std::string(bytes.begin(), bytes.end());
  };
  for (auto const& row : rows) {
    buffer->sizeIs(17), buffer->strIs("xxxxxxxxxx"), buffer->lenIs(9);
    request->activeIs(true);
    asked.back().answer(true, row.reply);
    EXPECT_EQ(buffer->str().view(), row.buffer + "x");
    EXPECT_EQ(text(request->received()), row.buffer);
    EXPECT_EQ(text(seen.records().back().read.view()), row.buffer);
  }
  request->activeIs(true);
  buffer->lenIs(3);  // shrunk on the way
  asked.back().answer(true, {7, 'a', 'b', 'c'});
  EXPECT_EQ(request->status(), Kex::Request::kFailed);
  EXPECT_EQ(request->failure(), "the buffer became shorter than the read");
  request->activeIs(true);
  asked.back().answer(false);
  EXPECT_EQ(request->error(), Smbus::ErrorKind::noAcknowledge);
  EXPECT_EQ(seen.records().back().error, Smbus::ErrorKind::noAcknowledge);
}

TEST_F(HardwareVornRequest, failsWhenNothingIsAnsweredThoughTheOneBeforeWas) {
  // Without a timeout of its own a transaction has what the bus grants any.
  double const begin = Kex::activityManager().config().clock()->time();
  request->activeIs(true);
  asked.back().answer(true);
  Kex::activityManager().runUntil(begin + 0.03);
  request->activeIs(true);
  Kex::activityManager().runUntil(begin + 0.07);
  EXPECT_EQ(log, "!3");
  Kex::activityManager().runUntil(begin + 0.09);
  EXPECT_EQ(log, "!3!2");
  EXPECT_EQ(request->error(), Smbus::ErrorKind::timeout);
}

TEST_F(HardwareVornRequest, operationsAreReplacedOnlyAfterItWasWithdrawn) {
  using Loaded = Hardware::VornRequest::Loaded;
  auto const make = [&](VornOp::Opcode opcode, U32 length = 2) {
    request->doMakeOp(opcode, 0x58, buffer->data(), length, 1, 1, 1);
  };
  request->activeIs(false);
  EXPECT_EQ(request->loaded(), Loaded::read);  // kept until something takes their place
  make(VornOp::kWrite), make(VornOp::kRead);
  EXPECT_EQ(request->loaded(), Loaded::writeAndRead);
  buffer->byteIs(0, 0xEE);  // a write is copied when it is made
  request->activeIs(true);
  ASSERT_EQ(asked.size(), 1U);
  EXPECT_EQ(asked[0].transaction.write.length, 2);
  EXPECT_EQ(asked[0].transaction.write.bytes[0], 0);
  EXPECT_EQ(asked[0].transaction.readLength, 2);
  for (U32 const length : {0U, 34U}) {
    EXPECT_THROW(make(VornOp::kRead, length), Kex::RangeException) << length;
  }
  // What is no transaction fails without reaching the wire.
  make(VornOp::kRead);
  request->activeIs(true);
  runPending();
  EXPECT_EQ(log, "!2");
  EXPECT_EQ(asked.size(), 1U);
  EXPECT_EQ(request->failure(), "the request holds no transaction");
  EXPECT_EQ(request->error(), Smbus::ErrorKind::other);
  request->activeIs(false);
  make(VornOp::kRead, 33);  // as long as a block can be
  EXPECT_EQ(request->loaded(), Loaded::read);
}

TEST_F(HardwareVornRequest, requestsOfOneBusTakeTurns) {
  auto const second = vorn->newRequest();
  auto const third = vorn->newRequest();
  load(*second), load(*third);
  request->activeIs(true), second->activeIs(true), third->activeIs(true);
  EXPECT_EQ(asked.size(), 1U);
  second->activeIs(false);   // waits: is never started
  request->activeIs(false);  // on the wire: the bus stays busy until the answer
  EXPECT_EQ(asked.size(), 1U);
  asked[0].answer(true);
  EXPECT_EQ(asked.size(), 2U);
  EXPECT_EQ(third->started(), 1U);
  EXPECT_EQ(second->started(), 0U);
  asked[0].answer(false);  // an old ticket
  asked[1].answer(true);
  EXPECT_EQ(third->status(), Kex::Request::kSucceeded);
}

}  // namespace
