// Hardware::VornRequest, one bus request of a slot.
#pragma once

#include <ostream>
#include <span>

#include "host/hal/Buf.h"
#include "host/kex/entity/NamedMembers.h"
#include "host/kex/notify/Activity.h"
#include "host/smbus/Bus.h"

namespace Kex {

/// Anything that is started and ends with a status.
struct Request {
  /// Idle before the start and after delivery; failed and succeeded are terminal.
  enum Status : U8 { kIdle = 0, kRunning = 1, kFailed = 2, kSucceeded = 3 };
};

KEX_API std::ostream& operator<<(std::ostream& out, Request::Status status);

}  // namespace Kex

namespace Hardware {

/// One operation of a request.
struct VornOp {
  /// What the operation does.
  enum Opcode : Kex::U8 { kRead = 0, kWrite = 1 };
};

/// Operations that are run as one bus transaction: a read, or a write and a read.
///
/// Each terminal status (failed, succeeded) is delivered to the handler exactly once, from the run
/// loop; afterwards the status is idle again, unless the handler started the request anew.
class KEX_API VornRequest final : public Kex::Owned, private Smbus::Client, private Kex::Activity {
 public:
  /// Whose request it is.
  class Handler {
   public:
    /// A terminal status was reached.
    virtual void handleStatus(VornRequest& request) = 0;
    /// Asked when the request is switched, loaded, or given to another handler: whether whose
    /// request it is does so. If somebody else does, it is withdrawn, and nothing is started.
    virtual bool isOwnDoing(VornRequest& /*request*/) { return true; }

   protected:
    Handler() = default;
    Handler(Handler const&) = default;
    Handler& operator=(Handler const&) = default;
    ~Handler() = default;
  };

  /// The operations of a request.
  enum class Loaded : Kex::U8 {
    nothing,
    read,
    write,
    writeAndRead,
    others,  ///< more, or in another order
  };

  static Kex::KexType& _fwkType();

  explicit VornRequest(Kex::Ptr<Smbus::Bus> bus) : bus_(std::move(bus)) {}
  Kex::KexType& fwkType() const override;
  ~VornRequest() override;

  /// What the request is for, as transcripts call it.
  char const* name() const override { return name_; }
  /// `name` is kept, not copied, and must never go away.
  void nameIs(char const* name) { name_ = name; }
  /// Who is told of terminal statuses; null for nobody. Not owned.
  void handlerIs(Handler* handler);

  /// Appends an operation: of `opcode` (1 write, 0 read), at the encoded `address`, with `length`
  /// bytes of `data` (a write's are copied now; a read's buffer is held, so that a late answer
  /// never meets one that is gone). The first one after `activeIs(false)` replaces all before it.
  /// Throws a range exception when `length` is 0 or above `Smbus::kMaxBlock`. The last three, the
  /// operation's element sizes and count, do not change what an SMBus transfer does.
  void doMakeOp(VornOp::Opcode opcode, Kex::U64 address, Hal::BufData const& data, Kex::U32 length,
                Kex::U8 elementSize, Kex::U8 elementLength, Kex::U32 count);

  bool active() const { return isActive_; }
  /// True starts the request, whether or not it is active: the operations made since the last
  /// `activeIs(false)`, else the previous ones again. False withdraws it; a status that is not
  /// delivered yet is discarded.
  void activeIs(bool active);

  /// Whether a terminal status is still to be delivered.
  bool isUnderWay() const { return isActive_ && (status_ == Kex::Request::kRunning || isQueued()); }
  Kex::Request::Status status() const { return status_; }
  /// What it is loaded with.
  Loaded loaded() const { return loaded_; }
  /// The operations as one transaction, if that is what they are.
  Smbus::Transaction const& transaction() const override { return transaction_; }
  /// What the last transaction read, count byte first, where it stands: in the buffer of the read
  /// operation. One that failed leaves there what it found.
  std::span<Kex::U8 const> received() const;
  /// Of what kind the last transaction's failure was; of one that failed only.
  Smbus::ErrorKind error() const { return error_; }
  /// Why the last transaction failed, for a person; empty when it did not.
  Kex::String8 const& failure() const { return failure_; }
  /// How many transactions were begun on the wire, ever.
  Kex::U64 started() const { return started_; }

 private:
  void handleStarted() override { ++started_; }
  void handleReply(Smbus::Reply const& reply) override;
  void statusIs(Kex::Request::Status terminal);
  void run() override;

  char const* name_ = "";
  Kex::Ptr<Smbus::Bus> bus_;
  Handler* handler_ = nullptr;
  Smbus::Transaction transaction_;
  /// Where the read puts its bytes.
  Kex::Ptr<Hal::BufBase> target_;
  Kex::String8 failure_;
  Kex::U64 started_ = 0;
  Kex::U64 activations_ = 0;
  Kex::Request::Status status_ = Kex::Request::kIdle;
  Smbus::ErrorKind error_ = Smbus::ErrorKind::other;
  Loaded loaded_ = Loaded::nothing;
  bool isActive_ = false;
  bool isReplacing_ = true;
};

}  // namespace Hardware
