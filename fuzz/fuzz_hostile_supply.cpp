// Fuzzes a slot with a supply whose every reply and status comes from the fuzzer; once it has
// nothing more to say it is pulled, and an honest one that takes its place must be identified.
#include <algorithm>
#include <limits>
#include <memory>

#include "agent/transport/SimulatedBus.h"
#include "agent/transport/Timer.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/Setup.h"
#include "host/kex/time/ActivityManager.h"
#include "pmbus/IdentifierFactory.h"

namespace {

using Smbus::Reply;

/// Longer than it takes to notice that a supply has gone.
constexpr double kEmptyTime = 15;
/// Longer than any back-off and a detection take together.
constexpr double kHealingTime = 30;

/// Answers as the input says; when it is used up, not at all for a while, then honestly.
class HostileTransport final : public Smbus::Transport {
 public:
  explicit HostileTransport(Fuzz::Input& input)
      : input_(input),
        honest_(Agent::SimulatedSupply(Fuzz::kImage, "EMERSON")),
        timer_([this] { sink_->answerIs(ticket_, reply_); }) {}

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override {
    if (input_.isEmpty() && Agent::Timer::now() >= pulledAt_ + kEmptyTime) {
      return honest_.start(transaction, ticket, sink);
    }
    ticket_ = ticket;
    sink_ = &sink;
    Kex::U8 const what = input_.byte();
    reply_ = what % 8 == 0 ? failure(what) : answer(transaction, what);
    if (input_.isEmpty()) {
      pulledAt_ = std::min(pulledAt_, Agent::Timer::now());
    }
    timer_.startIn(what % 64 == 0 ? 1.0 : 0.001);
  }

 private:
  static Reply failure(Kex::U8 what) {
    return Reply::failed(Smbus::kErrorKinds[what / 8U % Smbus::kErrorKinds.size()].kind);
  }
  /// An honest answer with bytes of the input over it, or the input's alone.
  Reply answer(Smbus::Transaction const& transaction, Kex::U8 what) {
    Reply reply{.isOk = true, .read = {}, .failure = {}};
    if (what % 8 < 5) {
      reply = Agent::SimulatedSupply(Fuzz::kImage, "EMERSON").answer(transaction);
    }
    auto const bytes = input_.bytes(what >> 3);
    std::ranges::copy(bytes.first(std::min(bytes.size(), reply.read.bytes.size())),
                      reply.read.bytes.begin());
    reply.read.length =
        std::max(reply.read.length, static_cast<Kex::U8>(std::min(bytes.size(), Smbus::kMaxBlock)));
    return reply;
  }

  Fuzz::Input& input_;
  Agent::SimulatedBus honest_;
  Reply reply_;
  Kex::U64 ticket_ = 0;
  Smbus::AnswerSink* sink_ = nullptr;
  double pulledAt_ = std::numeric_limits<double>::infinity();
  Agent::Timer timer_;
};

/// A slot's life with the hostile supply, and with the honest one.
void live(Fuzz::Input& input) {
  Fuzz::SlotParts const slot(std::make_unique<HostileTransport>(input));
  Kex::ActivityManager& loop = Kex::activityManager();
  // A transaction takes at least a millisecond and a poll's round a second, so this ends.
  while (!input.isEmpty()) {
    loop.runUntil(loop.config().clock()->time() + 1);
  }
  loop.runUntil(loop.config().clock()->time() + kEmptyTime + kHealingTime);
  auto const& supply = slot.status->supply();
  Fuzz::require(supply && supply->verdict == Hardware::PowerSupplySlot::Verdict::identified &&
                supply->product && supply->product->serialNumber() == Fuzz::kSerialNumber);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  // What is made once a process is made before objects are counted.
  [[maybe_unused]] static bool const isReady = [] {
    Fuzz::registerDescriptors();
    // The makers that are accepted are read by name when the first other one is told.
    constexpr std::uint8_t kForeign[] = {0x47, 7, 'F', 'O', 'R', 'E', 'I', 'G', 'N'};
    for (std::size_t const size : {std::size_t{0}, sizeof kForeign}) {
      Fuzz::Input input(kForeign, size);
      live(input);
    }
    return true;
  }();
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  Fuzz::Input input(data, size);
  live(input);
  Fuzz::require(Kex::VFPtrInterface::liveObjects() == before);
  return 0;
}
