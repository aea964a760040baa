// Base of the identifiers: the state machine of one slot.
#pragma once

#include "host/detector/Detection.h"
#include "host/fru/Controls.h"
#include "host/hardware/PowerSupplySlot.h"
#include "host/kex/entity/FileDescriptor.h"
#include "host/kex/entity/NamedMembers.h"
#include "host/kex/time/Clock.h"

namespace PowerSupplyDetector {

/// Detects the supply of one slot by three bus requests. A derived class loads the requests and
/// judges their answers; this class runs them and decides what follows:
///
/// - poll negative: `doResetIdentifier()` after `pollInterval`; positive: identify after
/// `pollDelay`
/// - identify negative: as a negative poll; positive: check at once, then every `pollInterval`
/// - check negative, or of another supply: `doResetIdentifier()` at once, though never twice within
///   one `pollInterval`
/// - the whole detection again every `reviewInterval`, and at once after a check that was answered
///   only after a failure
/// - wrong checksum or unsupported version: detection is repeated after 1 s, doubling to 10 s
///
/// The outcome is written to the slot's status: that of an identification after the first check, so
/// that a supply that is swapped while it is read is never described by a mixture; one that would
/// take another one's place only when the next detection comes to the same, unless it is that a
/// supply is identified.
///
/// While the identifier is at work (attached, constructed, initialised, with its clock and its
/// notifications on), one of its requests is under way or its deadline is set. What somebody else
/// does to it, its requests and buffers is answered by detection from the start, within one
/// `pollInterval`. All calls on the run loop's thread.
class KEX_API IdentifierBase : public Kex::Clock::NotifieeConst {
 public:
  /// What an identifier is about.
  enum IdentifierState : Kex::U8 {
    kInitial = 0,           ///< not constructed yet
    kConstructed = 1,       ///< detection has not started
    kPollForInsertion = 2,  ///< asking whether a supply is there, or waiting to ask
    kIdentifySupply = 3,    ///< reading the supply
    kCheckSupply = 4,       ///< seeing from time to time whether it is still there
  };
  using RequestPtr = Kex::Ptr<Hardware::VornRequest>;
  using SlotConfigPtr = Kex::Ptr<Hardware::PowerSupplySlot::SlotConfig const>;
  using SlotStatusPtr = Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus>;

  static Kex::KexType& _fwkType();

  /// The requests belong to this identifier from now on. Notifications are off until
  /// `hasNotificationActiveIs(true)`.
  IdentifierBase(Kex::Ptr<Kex::Clock const> const& clock, SlotConfigPtr const& config,
                 SlotStatusPtr const& status, RequestPtr const& pollForInsertionRequest,
                 RequestPtr const& identifySupplyRequest, RequestPtr const& checkSupplyRequest,
                 Kex::Ptr<Fru::IntCtrl> const& presentIntCtrl,
                 Kex::Ptr<Kex::FileDescriptor const> const& presentIntFd,
                 Kex::Ptr<Fru::Gpo> const& presentGpo);

  /// Off: withdraws the three requests and forgets the deadline; no handler runs. On again:
  /// detection starts over.
  void hasNotificationActiveIs(bool active) override;
  Kex::KexType& fwkType() const override;
  ~IdentifierBase() override;
  Kex::String8 path() const override { return place_.path(); }
  Kex::Ptr<PtrInterface> member(Kex::Name const& name) const override {
    return members_.member(name);
  }
  std::vector<Kex::Name> memberNames() const override { return members_.names(); }

  /// As the base does it: the one deadline that a handler sets is its check's retry. Somebody
  /// else's does not stand.
  void timeMinIs(double time);
  void onTime() override;
  /// Sets up what detection needs and loads the poll request, without starting it; sets
  /// `initialized`. Called once.
  virtual void doInitialize() = 0;
  /// Called when the request of that name reached a terminal status.
  virtual void handlePollForInsertionRequest() = 0;
  virtual void handleIdentifySupplyRequest() = 0;
  virtual void handleCheckSupplyRequest() = 0;
  /// Loads the poll request anew and starts it.
  virtual void doResetIdentifier() = 0;
  /// Seconds from a positive poll to identification: a freshly inserted supply settles.
  virtual double pollDelay() const { return timings_.pollDelay; }
  /// Off: detection stands still; on again: it starts over.
  virtual void kexFwkActivityIs(bool active);
  virtual void identifierNameIs(Kex::String8 name) { identifierName_ = std::move(name); }
  /// Seconds between two polls or checks. This and the other intervals take effect at once, and
  /// throw a range exception unless they are finite and at least `Timings::kLeast`.
  virtual void pollIntervalIs(double seconds);
  /// Seconds from the first check of a supply to the next time that all of it is read; at most
  /// `Timings::kMostWithoutSerialNumber` of one that has no serial number.
  void reviewIntervalIs(double seconds);
  /// Seconds to the first repetition of a detection that may come to better, and the most that they
  /// double to; from the next one on.
  void leastRepetitionIs(double seconds);
  /// See `leastRepetitionIs`.
  void mostRepetitionIs(double seconds);
  virtual void stateIs(IdentifierState state) { state_ = state; }
  virtual void presentIntCtrlDel() { presentIntCtrl_ = nullptr; }
  virtual void presentIntCtrlIs(Kex::Ptr<Fru::IntCtrl> const& ctrl) { presentIntCtrl_ = ctrl; }
  virtual void serialNumIs(Kex::String8 serialNum) { serialNum_ = std::move(serialNum); }
  virtual void fdlIs(Kex::String8 fdl) { fdl_ = std::move(fdl); }
  virtual void hwErrorIs(bool hwError) { hwError_ = hwError; }
  virtual void initializedIs(bool initialized);
  /// Consecutive failed transactions.
  virtual void failCountIs(Kex::U8 failCount) { failCount_ = failCount; }
  virtual void pollDelayIs(double seconds);
  virtual void constructedIs(bool constructed);
  /// On: withdraws the requests for good, before the identifier is let go.
  void kexDoZombieReactors(bool on) override;
  virtual void clockInputIs(Kex::Ptr<Kex::Clock const> const& clock) { clockInput_ = clock; }
  virtual void configDel() { config_ = nullptr; }
  virtual void configIs(SlotConfigPtr const& config) { config_ = config; }
  virtual void pollForInsertionRequestDel() { requestIs(poll_, {}); }
  virtual void pollForInsertionRequestIs(RequestPtr const& request) { requestIs(poll_, request); }
  virtual void identifySupplyRequestDel() { requestIs(identify_, {}); }
  virtual void identifySupplyRequestIs(RequestPtr const& request) { requestIs(identify_, request); }
  virtual void checkSupplyRequestDel() { requestIs(check_, {}); }
  virtual void checkSupplyRequestIs(RequestPtr const& request) { requestIs(check_, request); }
  virtual void presentIntFdDel() { presentIntFd_ = nullptr; }
  virtual void presentIntFdIs(Kex::Ptr<Kex::FileDescriptor const> const& fd) { presentIntFd_ = fd; }

  /// The end of a request's work, reported by its handler; `status()` of the request still holds.
  void doPollForInsertionRequestComplete(bool present);
  /// See `doPollForInsertionRequestComplete`.
  void doIdentifySupplyRequestComplete(bool identified);
  /// See `doPollForInsertionRequestComplete`.
  void doCheckSupplyRequestComplete(bool present);

  Kex::Ptr<Kex::Clock const> const& clockInput() const { return clockInput_; }
  SlotConfigPtr const& config() const { return config_; }
  SlotStatusPtr const& status() const { return status_; }
  RequestPtr const& pollForInsertionRequest() const { return poll_.request(); }
  RequestPtr const& identifySupplyRequest() const { return identify_.request(); }
  RequestPtr const& checkSupplyRequest() const { return check_.request(); }
  Kex::Ptr<Fru::IntCtrl> const& presentIntCtrl() const { return presentIntCtrl_; }
  Kex::Ptr<Kex::FileDescriptor const> const& presentIntFd() const { return presentIntFd_; }
  Kex::Ptr<Fru::Gpo> const& presentGpo() const { return presentGpo_; }
  Kex::String8 const& identifierName() const { return identifierName_; }
  IdentifierState state() const { return state_; }
  /// The state as its number, 0 to 4.
  Kex::U8 stateNumber() const { return state_; }
  double pollInterval() const { return timings_.pollInterval; }
  double reviewInterval() const { return timings_.reviewInterval; }
  Kex::String8 const& serialNum() const { return serialNum_; }
  Kex::String8 const& fdl() const { return fdl_; }
  bool hwError() const { return hwError_; }
  bool initialized() const { return initialized_; }
  bool constructed() const { return constructed_; }
  Kex::U8 failCount() const { return failCount_; }

  /// Where the identifier is held, by whom its detection is started. Throws a range exception for
  /// an identifier without its clock or the status that it reports to.
  void placeIs(Kex::Place place);
  /// What is remembered of the detections so far.
  Memory const& memory() const { return detection_.memory; }
  /// Goes on as if this had been remembered when detection started over last.
  void memoryIs(Memory const& memory);
  /// Initialises the identifier, once, if notifications are on.
  void doPrepare();
  /// Prepares the identifier and starts the first poll, if notifications are on.
  void doStartDetection();

 protected:
  using Supply = Hardware::PowerSupplySlot::Supply;

  /// Forgets what was read of a supply, before the poll is entered again.
  virtual void doForgetSupply() {}
  /// What was read of the supply's records so far, for the report.
  virtual Findings findings() const { return {}; }
  /// Short name of the descriptor that manages the supply; none where there are no descriptors.
  virtual std::optional<Kex::String8> managingDescriptor() const { return std::nullopt; }
  /// The first bytes of the product info area, as last read; a check compares them.
  virtual Kex::String8 areaHeader() const { return {}; }
  /// Whether identification read these bytes from `offset` of the FRU data on.
  virtual bool isAsRead(Kex::U8 offset, std::span<Kex::U8 const> bytes) const {
    return bytes.empty() && offset == 0;
  }

  /// What the identifier holds by name; a derived class adds its own.
  Kex::NamedMembers& members() { return members_; }

  void handleOutsideChange() override;

 private:
  using Work = void (IdentifierBase::*)();

  /// One of the three requests, joined to the handler that judges it.
  class Channel final : Hardware::VornRequest::Handler {
   public:
    /// `name` is what transcripts call the request, `member` its name at the identifier.
    Channel(IdentifierBase& owner, char const* name, char const* member, Work handle)
        : owner_(owner), name_(name), handle_(handle), request_(owner.members_, member) {}
    Channel(Channel const&) = delete;
    Channel& operator=(Channel const&) = delete;
    ~Channel() { requestIs({}); }

    RequestPtr const& request() const { return request_.ptr(); }
    void requestIs(RequestPtr const& request);
    /// The request's endings come to this channel, whoever took them.
    void attach();
    void withdraw();
    bool isUnderWay() const { return request() && request()->isUnderWay(); }
    Kex::U64 started() const { return request() ? request()->started() : 0; }

   private:
    void handleStatus(Hardware::VornRequest& request) override;
    bool isOwnDoing(Hardware::VornRequest& request) override;

    IdentifierBase& owner_;
    char const* name_;
    Work handle_;
    Kex::NamedMembers::Member<Hardware::VornRequest> request_;
  };

  /// While it lives, what happens to the requests is this class's own doing.
  class Doing {
   public:
    explicit Doing(IdentifierBase& owner) : owner_(owner) { ++owner_.doings_; }
    Doing(Doing const&) = delete;
    Doing& operator=(Doing const&) = delete;
    ~Doing() { --owner_.doings_; }

   private:
    IdentifierBase& owner_;
  };

  void handleAttached(bool attached) override;
  /// Whether detection is to go on.
  bool isAtWork() const;
  /// Whether exactly one request is under way, or else a deadline is set.
  bool isAlive() const;
  /// Detection starts over in due time, if it is to go on at all.
  void settle();
  /// The same, for one that is held and may not have started yet.
  void settleOrStart();
  void handleDeadline();
  /// Does `work`; an exception that it throws is this slot's alone. Sees to it that detection is
  /// alive afterwards.
  void guarded(Work work);
  void intervalIs(double Timings::*interval, char const* name, double seconds);
  Checked checked(bool present) const;
  /// Sets what the one deadline is for, in place of what it was for.
  void nextIs(Next what, double time);
  void takeRetry();
  void requestIs(Channel& channel, RequestPtr const& request);
  /// What the policy decides to follow `ending`, which is remembered with the situation.
  Move decided(Ending const& ending);
  /// Does what the policy decides to follow `ending`; `tell` makes what is told of the ending
  /// itself.
  template <class Tell>
  void carryOut(Ending const& ending, Tell tell);
  void withdrawRequests();
  void resetDetection();
  void startRequest(IdentifierState state, RequestPtr const& request);
  void publish(Supply supply);
  void abandon(Kex::String8 const& why);
  Kex::U64 startedTransactions() const;

  Kex::NamedMembers members_{*this};
  Kex::Ptr<Kex::Clock const> clockInput_;
  SlotConfigPtr config_;
  SlotStatusPtr status_;
  Channel poll_;
  Channel identify_;
  Channel check_;
  Kex::Ptr<Fru::IntCtrl> presentIntCtrl_;
  Kex::Ptr<Kex::FileDescriptor const> presentIntFd_;
  Kex::Ptr<Fru::Gpo> presentGpo_;
  Kex::Place place_;
  Kex::String8 identifierName_;
  Kex::String8 serialNum_;
  Kex::String8 fdl_;
  Timings timings_;
  Detection detection_;
  IdentifierState state_ = kInitial;
  Next next_ = Next::nothing;
  Kex::U8 failCount_ = 0;
  bool hwError_ = false;
  bool initialized_ = false;
  bool constructed_ = false;
  bool isStarted_ = false;
  bool isFrameworkActive_ = true;
  /// How many of this class's own doings are under way, one inside the other.
  unsigned doings_ = 0;
};

KEX_API std::ostream& operator<<(std::ostream& out, IdentifierBase::IdentifierState state);

}  // namespace PowerSupplyDetector
