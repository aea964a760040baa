// What a slot keeps of what happened in it: in a bounded memory, and nothing of it is allocated
// while nothing changes.
#include <gmock/gmock.h>

#include <deque>
#include <random>

#include "agent/recording/FlightRing.h"
#include "tests/unit/agent_transport.h"

namespace {

using Agent::Beginning;
using Agent::ByteQueue;
using Agent::FlightRing;
using testing::ElementsAre;
using testing::ElementsAreArray;

TEST(ByteQueue, GivesBackWhatItGot) {
  constexpr std::size_t kCapacity = 100;
  ByteQueue queue(kCapacity);
  std::deque<std::string> expected;
  std::size_t used = 0;
  std::mt19937 random(1);
  for (int i = 0; i < 5000; ++i) {
    std::string const piece(random() % 40, static_cast<char>(i));
    std::size_t const cut = random() % (piece.size() + 1);
    while (!queue.enqueue({piece.substr(0, cut), piece.substr(cut)})) {
      ASSERT_GT(used + piece.size() + 2, kCapacity);
      ASSERT_EQ(queue.dequeue(), expected.front());
      used -= expected.front().size() + 2;
      expected.pop_front();
    }
    expected.push_back(piece);
    used += piece.size() + 2;
    std::vector<std::string> pieces;
    queue.forEach([&](std::string_view each) { pieces.emplace_back(each); });
    ASSERT_THAT(pieces, ElementsAreArray(expected));
  }
}

class Asker final : public Smbus::Client {
 public:
  explicit Asker(char const* name) : name_(name) {}
  char const* name() const override { return name_; }

 private:
  Smbus::Transaction const& transaction() const override { return transaction_; }
  void handleStarted() override {}
  void handleReply(Smbus::Reply const&) override {}

  char const* name_;
  Smbus::Transaction transaction_;
};

/// A slot whose transactions are told one after the other.
struct FlightRingTest : testing::Test, Agent::RecordingSink {
  Asker poll{"pollForInsertion"};
  Asker check{"checkSupply"};
  FlightRing ring;
  double now = 0;
  std::vector<std::string> told;

  void ask(Asker const& asker, Smbus::Transaction const& transaction, Smbus::Reply const& reply) {
    ++now;
    if (!ring.isRepeated(asker, transaction, reply, now)) {
      Beginning beginning;
      beginning.time = now;
      bool const isBeginning = Agent::beginsDetection(asker.name(), transaction);
      ring.transactionIs(asker, transaction, reply, now, isBeginning ? &beginning : nullptr);
    }
  }
  void checkIs(Kex::U8 value) {
    Smbus::Reply reply{.isOk = true, .read = {}, .error = {}, .failure = {}};
    reply.read.length = 2;
    reply.read.bytes = {1, value};
    ask(check, agentTest::fruRead(0, 1), reply);
  }
  void pollFails(Smbus::ErrorKind kind = Smbus::ErrorKind::noAcknowledge) {
    ask(poll, agentTest::mfrIdRead(), Smbus::Reply::failed(kind));
  }
  std::vector<std::string> const& tell() {
    told.clear();
    ring.tell(*this, [](Beginning const& beginning) {
      return "start " + std::to_string(static_cast<int>(beginning.time));
    });
    return told;
  }

  void transactionIs(Agent::RecordedTransaction const& transaction) override {
    auto const& record = transaction.record;
    std::string text = record.request + (record.isOk ? " ok" : " failed");
    if (transaction.repeats != 0) {
      text += " + " + std::to_string(transaction.repeats) + " until " +
              std::to_string(static_cast<int>(transaction.until));
    }
    told.push_back(text);
  }
  void lineIs(std::string const& line) override { told.push_back(line); }
};

TEST_F(FlightRingTest, CountsWhatIsAlike) {
  for (int i = 0; i < 3; ++i) {
    pollFails();
  }
  pollFails(Smbus::ErrorKind::timeout);
  for (int i = 0; i < 1000; ++i) {
    checkIs(7);
  }
  checkIs(8);
  ring.lineIs("supply", true);
  checkIs(8);
  EXPECT_THAT(tell(), ElementsAre("start 1", "pollForInsertion failed + 2 until 3",
                                  "pollForInsertion failed", "checkSupply ok + 999 until 1004",
                                  "checkSupply ok", "supply", "checkSupply ok"));
}

TEST_F(FlightRingTest, BeginsWithADetectionAndTheSupplyBefore) {
  ring.lineIs("older", true);
  ring.lineIs("old", true);
  ring.lineIs("act", false);
  checkIs(1);
  pollFails();
  EXPECT_THAT(tell(), ElementsAre("old", "start 2", "pollForInsertion failed"));
}

TEST_F(FlightRingTest, IsBounded) {
  ring.lineIs("lost", true);
  ring.lineIs(std::string(FlightRing::kLongestLine + 1, 'x'), false);
  for (int i = 0; i < 1000; ++i) {
    i % 100 == 0 ? pollFails() : checkIs(static_cast<Kex::U8>(i));
  }
  auto const& kept = tell();
  EXPECT_THAT(std::vector(kept.begin(), kept.begin() + 3),
              ElementsAre("lost", "start 801", "pollForInsertion failed"));
  EXPECT_EQ(kept.size(), 2 + 200);
  for (int i = 0; i < 50; ++i) {
    ring.lineIs(std::string(FlightRing::kLongestLine, 'x'), false);
    pollFails(i % 2 == 0 ? Smbus::ErrorKind::timeout : Smbus::ErrorKind::noAcknowledge);
  }
  std::size_t bytes = 0;
  for (std::string const& line : tell()) {
    bytes += line.size();
  }
  EXPECT_LT(bytes, 24 * 1024);
  EXPECT_GT(bytes, 4 * FlightRing::kLongestLine);
}

}  // namespace
