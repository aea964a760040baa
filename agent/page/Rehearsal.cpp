// A recorded slot that is lived once more, so that its page can tell what came of it.
#include "agent/page/Rehearsal.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/base/Error.h"
#include "agent/page/RecordedEvents.h"
#include "agent/recording/ReplayTransport.h"
#include "agent/report/Report.h"
#include "agent/slots/Slot.h"
#include "agent/transport/Timer.h"
#include "host/kex/trace/Trace.h"

namespace Agent {

namespace {

/// What the slot is called while it is played; recordings may have names that no slot can have.
constexpr std::string_view kName = "Rehearsed";
/// How long the first transaction of a recording that begins late may take, in seconds.
constexpr double kLongestFirst = 1;
/// Listens to what handlers say, as long as it lives: to every trace statement, whether its level
/// is on or not.
class Listener {
 public:
  Listener() : before_(std::exchange(Kex::coverageStream_, &heard_)) {}
  Listener(Listener const&) = delete;
  Listener& operator=(Listener const&) = delete;
  ~Listener() { Kex::coverageStream_ = before_; }

  /// What was said since the last time.
  std::vector<std::string> take() {
    std::istringstream lines(std::exchange(heard_, std::ostringstream()).str());
    std::vector<std::string> said;
    for (std::string line; std::getline(lines, line);) {
      said.push_back(textOf(line));
    }
    return said;
  }

 private:
  /// The text of `SOURCE:LINE FUNCTION LEVEL TEXT`, without the slot's name in front.
  static std::string textOf(std::string_view line) {
    for (int word = 0; word < 3; ++word) {
      line.remove_prefix(std::min(line.find(' '), line.size() - 1) + 1);
    }
    constexpr std::string_view kFronts[] = {"PowerSupplySlot ", kName, ":", " "};
    for (std::string_view const front : kFronts) {
      line.remove_prefix(line.starts_with(front) ? front.size() : 0);
    }
    return std::string(line);
  }

  std::ostringstream heard_;
  std::ostream* before_;
};

/// Tells a lane of a slot as it is played.
class Rehearsal final : Smbus::TransactionObserver {
 public:
  /// `hasVerdicts`: those of the recording are told already.
  Rehearsal(Recording const& recording, std::string const& slot, bool hasVerdicts,
            Plugin const& plugin, Lane& lane)
      : transactions_(recording.transactions(slot)),
        hasVerdicts_(hasVerdicts),
        lane_(lane),
        slot_(std::string(kName), opening(recording, slot), plugin) {
    slot_.observerIs(this);
    slot_.onSupplyIs([this](Supply const& supply) { handleSupply(supply); });
  }
  Rehearsal(Rehearsal const&) = delete;
  Rehearsal& operator=(Rehearsal const&) = delete;
  ~Rehearsal() = default;

  bool isOver() const { return !end_.empty(); }
  /// Adds what the replay did not come to.
  void finish() {
    tellPending();
    if (told_ < transactions_.size()) {
      lane_.noteIs("the replay ends early: " + end_);
    }
    tellUpTo(transactions_.size());
  }

 private:
  Opening opening(Recording const& recording, std::string const& slot) {
    std::optional<Beginning> const& beginning = recording.beginning(slot);
    double const late =
        beginning ? beginning->time : transactions_.front().record.time - kLongestFirst;
    auto replay = std::make_unique<ReplayTransport>(
        recording, slot, [this](std::string const& why) { handleEnd(why); },
        Timer::now() - std::max(late, 0.0));
    replay_ = replay.get();
    return {std::move(replay), beginning};
  }

  void handleEnd(std::string const& why) {
    end_ = why;
    slot_.stop();
  }

  void handleTransaction(Smbus::Client const& client, Smbus::Transaction const& /*transaction*/,
                         Smbus::Reply const& /*reply*/) override {
    if (isOver()) {
      return;
    }
    std::size_t const index = replay_->position() - 1;
    if (index < told_ || (index == told_ && pending_)) {
      // A repetition, of which the last is told with the first.
      listener_.take();
      return;
    }
    tellPending();
    tellUpTo(index);
    pending_ = transactions_[index].record;
    pending_->request = client.name();
    listener_.take();
  }

  void handleSupply(Supply const& supply) {
    if (hasVerdicts_) {
      return;
    }
    // Verdicts are reached where transactions end.
    double const time = pending_ ? pending_->time : 0;
    std::string const serialNumber(supply.product ? supply.product->serialNumber().view()
                                                  : std::string_view());
    LaneSupply told{.verdict = verdictName(supply.verdict),
                    .serialNumber = serialNumber,
                    .fdl = std::string(supply.fdl.view())};
    addSupply(told.members.add("source", std::optional<std::string>()), supply);
    lane_.supplyIs(time, std::move(told));
  }

  void tellPending() {
    if (pending_) {
      lane_.transactionIs(*pending_, listener_.take());
      pending_.reset();
      tellLast(transactions_[told_++]);
    }
  }

  /// Adds those before `end` that were not asked for.
  void tellUpTo(std::size_t end) {
    for (; told_ < end; ++told_) {
      RecordedTransaction const& one = transactions_[told_];
      lane_.transactionIs(one.record, one.unknown.empty() ? std::vector<std::string>()
                                                          : std::vector<std::string>{one.unknown});
      tellLast(one);
    }
  }

  /// Adds the last repetition, if there is one, and how many there were.
  void tellLast(RecordedTransaction const& one) {
    if (one.repeats != 0) {
      TransactionRecord last = one.record;
      last.time = one.until;
      lane_.transactionIs(last, {"the last of " + std::to_string(one.repeats) + " repetitions"});
    }
  }

  std::vector<RecordedTransaction> const& transactions_;
  bool hasVerdicts_;
  Lane& lane_;
  Listener listener_;
  /// Why the replay has ended; empty while it has not.
  std::string end_;
  /// How many transactions the lane was told of.
  std::size_t told_ = 0;
  /// The one that the handler is at.
  std::optional<TransactionRecord> pending_;
  /// Owned by the slot.
  ReplayTransport const* replay_ = nullptr;
  Slot slot_;
};

}  // namespace

void rehearse(Recording const& recording, std::string const& slot, Plugin const& plugin, Loop& loop,
              Lane& lane) {
  RecordedSlot const& recorded = recording.slots().at(slot);
  bool const hasVerdicts = tellEvents(recording.file(), recorded, lane);
  if (recorded.transactions.empty()) {
    return;
  }
  for (std::string const& doubt : recording.doubts(slot)) {
    lane.noteIs(doubt);
  }
  Rehearsal rehearsal(recording, slot, hasVerdicts, plugin, lane);
  loop.run(Loop::kForever, [&] { return rehearsal.isOver(); });
  if (loop.isStopped()) {
    throw Failure("interrupted");
  }
  rehearsal.finish();
}

}  // namespace Agent
