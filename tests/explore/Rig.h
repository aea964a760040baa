// A slot of which everything that happens to it is chosen: the bus's answers, outside acts, pauses.
#pragma once

#include <cmath>
#include <functional>
#include <optional>
#include <string>

#include "host/detector/SlotDriver.h"
#include "tests/explore/Supplies.h"
#include "tests/support/OutsideActs.h"

namespace explore {

/// Timings of the slot, in seconds, are multiples of one, the delay of a check's retry.
inline constexpr double kTick = 0.25;
inline constexpr double kPollDelay = kTick;
inline constexpr double kPollInterval = 2 * kTick;
inline constexpr double kReviewInterval = 5 * kTick;
inline constexpr double kLeastRepetition = 2 * kTick;
inline constexpr double kMostRepetition = 4 * kTick;
/// Detections that it takes to take an identified supply's description away.
inline constexpr unsigned kConfirming = 2;
/// What a slot may take to tell that it is empty, and which supply has been in it all the while.
inline constexpr double kEmptying = 15;
inline constexpr double kRecovery = kEmptying + kReviewInterval;

/// The real identifier, requests and bus, on virtual time that somebody else steps. Whatever is
/// wrong with it is thrown as `std::runtime_error`.
class Rig {
 public:
  Rig();
  Rig(Rig const&) = delete;
  Rig& operator=(Rig const&) = delete;
  ~Rig();

  /// Whether a transaction is on the wire, as the transport sees it.
  bool isOnWire() const { return wire_->pending.has_value(); }
  /// Whether somebody waits for its answer, too.
  bool isAsked() const;
  /// Whether the answer to it would cover what `flip` spoils.
  bool covers(Flip const& flip) const;
  /// Whether the transaction on the wire reads up to the end of supply A's area.
  bool endsTheArea() const;
  /// From where on the transaction on the wire reads the supply's FRU memory.
  unsigned askedOffset() const { return wire_->pending->transaction.write.bytes[1]; }
  /// Seconds to the identifier's deadline; infinity when there is none.
  double wait() const { return identifier_->timeMin() - now(); }
  /// What tells this state from others: all that decides what follows, but for `seen`.
  std::uint64_t digest() const;
  /// The supplies that answered since the detection began and have all that was read of an area, a
  /// bit each: what is read may be told as theirs.
  unsigned seen() const { return isReading() ? seen_ : 0; }

  /// `supply` answers, at once; `spoil` has a hand in it.
  void answer(Supply supply, std::function<void(Smbus::Reply&)> const& spoil = {});
  void fail(Smbus::ErrorKind kind, double after = 0);
  /// The answer comes when the bus has given the transaction up.
  void answerLate();
  /// Time goes on by `part` of the wait.
  void elapse(double part = 1);
  /// Time goes on, but not beyond what ends a transaction.
  void pass(double seconds);
  /// The wait is over; if that starts a transaction, the transport throws.
  void elapseIntoThrow();
  void act(busTest::Act const& act);
  /// Nothing may be started while a switch is off.
  void switchIs(busTest::Switch const& one, bool on);
  /// An identifier that cannot be initialised is to take this one's place.
  void replaceInVain();
  /// `interfere` happens when a descriptor is asked for the next time.
  void interfereInWalk(std::function<void(Rig&)> interfere) { interfere_ = std::move(interfere); }
  Emerson::PmbusIdentifier::Identifier& identifier() { return *identifier_; }

  /// The slot tells this supply, or an empty slot where there is none, in time after having it from
  /// now on.
  void recover(std::optional<Supply> supply);

 private:
  class Wire final : public Smbus::Transport {
   public:
    explicit Wire(Rig& rig) : rig_(rig) {}
    void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
               Smbus::AnswerSink& sink) override;

    struct Pending {
      Smbus::Transaction transaction;
      Kex::U64 ticket;
      Smbus::AnswerSink* sink;
      double begun;
      void answer(Smbus::Reply const& reply) const { sink->answerIs(ticket, reply); }
    };
    std::optional<Pending> pending;
    bool throwsAtStart = false;

   private:
    Rig& rig_;
  };
  class Model;
  class Watched;

  double now() const;
  Kex::Ptr<Emerson::PmbusIdentifier::Identifier> newIdentifier(Kex::U8 deviceId);
  void run(double until);
  /// Keeps the first thing that is wrong for `check`: an exception would be the slot's to handle
  /// where the slot calls.
  void wrong(Kex::String8 const& what);
  void started(Smbus::Transaction const& transaction);
  void reset();
  void seePublished();
  /// Everything that must hold at every moment; throws what is wrong.
  void check();
  /// What is left of the attempts that the request under way has; less after each answer.
  unsigned attemptsLeft() const;
  void answerWith(Smbus::Reply const& reply);
  Smbus::Reply replyOf(Supply supply) const;
  bool isReading() const;
  bool isWaitingFor(PowerSupplyDetector::IdentifierBase::IdentifierState state) const;

  Wire* wire_;
  Kex::Ptr<Smbus::Bus> bus_;
  Kex::Ptr<Hardware::Vorn> vorn_;
  Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus> status_;
  Kex::Ptr<PowerSupplyDetector::SlotDriver> driver_;
  Kex::Ptr<Emerson::PmbusIdentifier::Identifier> identifier_;
  std::function<void(Rig&)> interfere_;
  Kex::U32 version_ = 0;
  /// When detection started over last, as the slot remembers it.
  double lastReset_ = 0;
  bool isActing_ = false;
  bool isOff_ = false;
  std::string fault_;
  unsigned detections_ = 0;
  unsigned seen_ = 0;
  /// Detections since a supply was identified, up to those that it takes to tell anything else.
  unsigned doubts_ = kConfirming;
};

}  // namespace explore
