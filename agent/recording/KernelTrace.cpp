// The reader of what the kernel's i2c and smbus trace events tell, as text.
#include "agent/recording/KernelTrace.h"

#include <linux/i2c.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "agent/base/Error.h"
#include "agent/recording/TraceEvent.h"
#include "agent/transport/LinuxAdapter.h"

namespace Agent {

namespace {

using Bytes = std::vector<Kex::U8>;
using Kind = TraceEventKind;

constexpr Kex::U8 kDevice = 0x58;

constexpr char const* kNoReply =
    "what was read is not known: the kernel has no event for the reply of a block process call "
    "that the adapter carries out itself";
constexpr char const* kNotThere = "what was read is not in the trace";

/// A message of a transfer in plain I2C.
struct Message {
  bool isRead;
  bool isToDevice;
  unsigned length;
  /// What it writes, or has read.
  Bytes bytes;
};

/// A transfer in plain I2C that is under way.
struct Transfer {
  std::size_t line;
  std::vector<Message> messages{};

  bool isToDevice() const { return std::ranges::any_of(messages, &Message::isToDevice); }
  /// Whether it writes a command, and reads the answer to it.
  bool isQuestion() const {
    return messages.size() == 2 && std::ranges::all_of(messages, &Message::isToDevice) &&
           !messages[0].isRead && messages[1].isRead && !messages[0].bytes.empty() &&
           messages[0].bytes.size() <= 1 + Smbus::kMaxBlock;
  }
};

/// An SMBus call that is under way.
struct Call {
  std::size_t line;
  unsigned command;
  std::string protocol;
  bool isRead;
  Bytes written;
  /// What was read, as far as it is told.
  Bytes reply{};

  bool isQuestion() const {
    return protocol == "BLOCK_PROC_CALL" ? written.size() <= Smbus::kMaxBlock
                                         : protocol == "BLOCK_DATA" && isRead;
  }
};

/// A block of these bytes; what no block has is cut.
Smbus::Block blockOf(std::span<Kex::U8 const> bytes) {
  Smbus::Block block;
  block.length = static_cast<Kex::U8>(std::min(bytes.size(), Smbus::kMaxBlock));
  std::copy_n(bytes.begin(), block.length, block.bytes.begin());
  return block;
}

bool isToDevice(TraceEvent const& event) {
  return event.address == kDevice && (event.flags & I2C_M_TEN) == 0;
}

}  // namespace

void KernelTrace::Doubt::lineIs(std::size_t line) { firstLine = count++ == 0 ? line : firstLine; }

void KernelTrace::Doubt::addTo(std::vector<std::string>& doubts, char const* what) const {
  if (count != 0) {
    doubts.push_back(std::to_string(firstLine) + ": " + what +
                     (count == 1 ? "" : "; so " + std::to_string(count) + " times in all"));
  }
}

/// Puts the events of one adapter together.
class KernelTrace::Adapter {
 public:
  explicit Adapter(unsigned number) : number_(number) {}

  /// Takes in an event of this adapter, which stands in `line`.
  void eventIs(TraceEvent const& event, std::size_t line) {
    switch (event.kind) {
      case Kind::i2cWrite:
      case Kind::i2cRead: return handleMessage(event, line);
      case Kind::i2cReply: return handleReply(event);
      case Kind::i2cResult: return handleResult(event, line);
      case Kind::smbusWrite:
      case Kind::smbusRead: return handleCall(event, line);
      case Kind::smbusReply: return handleCallReply(event);
      case Kind::smbusResult: return handleCallResult(event, line);
      case Kind::lost: return;
    }
  }

  /// What is under way is not told to its end.
  void interrupt() {
    dropTransfer();
    if (auto const call = std::exchange(call_, std::nullopt)) {
      incomplete_.lineIs(call->line);
    }
  }

  /// When the device was addressed first; infinity for never.
  double start() const { return start_; }

  /// What was told, with times counted from `start`.
  RecordedSlot end(double start) {
    interrupt();
    double latest = 0;
    for (RecordedTransaction& transaction : bus_.transactions) {
      latest = std::max(transaction.record.time - start, latest);
      transaction.record.time = latest;
    }
    others_.addTo(bus_.doubts,
                  "a transfer is left out, as it is no block read and no block process call");
    incomplete_.addTo(bus_.doubts,
                      "a transfer is left out, as its begin or its end is not in the trace");
    return std::move(bus_);
  }

 private:
  void dropTransfer() {
    auto const transfer = std::exchange(transfer_, std::nullopt);
    if (transfer && transfer->isToDevice() && !call_) {
      incomplete_.lineIs(transfer->line);
    }
  }

  void handleMessage(TraceEvent const& event, std::size_t line) {
    if (event.message == 0) {
      dropTransfer();
      transfer_ = Transfer{.line = line};
    } else if (!transfer_ || event.message != transfer_->messages.size()) {
      return dropTransfer();
    }
    if (isToDevice(event)) {
      start_ = std::min(start_, event.time);
    }
    transfer_->messages.push_back({.isRead = event.kind == Kind::i2cRead,
                                   .isToDevice = isToDevice(event),
                                   .length = event.length,
                                   .bytes = event.bytes});
  }

  void handleReply(TraceEvent const& event) {
    if (transfer_ && event.message < transfer_->messages.size()) {
      transfer_->messages[event.message].bytes = event.bytes;
    }
  }

  void handleResult(TraceEvent const& event, std::size_t line) {
    auto transfer = std::exchange(transfer_, std::nullopt);
    if (!transfer || !transfer->isToDevice()) {
      return;
    }
    if (transfer->messages.size() != event.messages) {
      incomplete_.lineIs(transfer->line);
    } else if (call_) {
      call_->reply = std::move(transfer->messages.back().bytes);
    } else if (!transfer->isQuestion()) {
      others_.lineIs(transfer->line);
    } else {
      Bytes const& sent = transfer->messages[0].bytes;
      add(event, line, sent[0], std::span(sent).subspan(1), transfer->messages[1].length,
          transfer->messages[1].bytes);
    }
  }

  void handleCall(TraceEvent const& event, std::size_t line) {
    if (isToDevice(event)) {
      interrupt();
      start_ = std::min(start_, event.time);
      call_ = Call{.line = line,
                   .command = event.command,
                   .protocol = std::string(event.protocol),
                   .isRead = event.kind == Kind::smbusRead,
                   .written = event.bytes};
    }
  }

  void handleCallReply(TraceEvent const& event) {
    if (call_ && isToDevice(event)) {
      call_->reply = event.bytes;
    }
  }

  void handleCallResult(TraceEvent const& event, std::size_t line) {
    if (!isToDevice(event)) {
      return;
    }
    auto const call = std::exchange(call_, std::nullopt);
    if (!call) {
      incomplete_.lineIs(line);
    } else if (!call->isQuestion()) {
      others_.lineIs(call->line);
    } else {
      add(event, line, static_cast<Kex::U8>(call->command), call->written, Smbus::kMaxBlock,
          call->reply);
    }
  }

  /// Adds what ended with `event`, which stands in `line`: `read` is what it read, of `length`
  /// bytes that were asked for.
  void add(TraceEvent const& event, std::size_t line, Kex::U8 command,
           std::span<Kex::U8 const> write, std::size_t length, Bytes const& read) {
    RecordedTransaction& added = bus_.transactions.emplace_back();
    added.line = line;
    TransactionRecord& record = added.record;
    record.time = event.time;
    bool const isOk = event.result >= 0 && static_cast<unsigned>(event.result) == event.messages;
    Smbus::Transaction& transaction = record.transaction;
    transaction.address.deviceIs(Smbus::U7(kDevice));
    transaction.address.offsetIs(command);
    transaction.write = blockOf(write);
    transaction.readLength = static_cast<Kex::U8>(
        std::clamp<std::size_t>(isOk ? read.size() : length, 1, Smbus::kMaxBlock));
    if (isOk && read.empty()) {
      added.unknown = event.kind == Kind::smbusResult && !write.empty() ? kNoReply : kNotThere;
    }
    Smbus::Reply const reply = linuxReply(number_, transaction, [&] {
      checkCarriedOut(event.result, event.messages);
      return blockOf(read);
    });
    record.isOk = reply.isOk;
    record.read = reply.read;
    record.error = reply.error;
    record.failure = std::string(reply.failure.view());
  }

  unsigned number_;
  double start_ = std::numeric_limits<double>::infinity();
  std::optional<Transfer> transfer_;
  std::optional<Call> call_;
  Doubt others_;
  Doubt incomplete_;
  RecordedSlot bus_;
};

KernelTrace::KernelTrace() = default;
KernelTrace::~KernelTrace() = default;

void KernelTrace::lineIs(std::string_view line, std::size_t number) {
  auto const event = traceEventIn(line);
  if (!event) {
    return;
  }
  if (event->kind == Kind::lost) {
    losses_.lineIs(number);
    for (auto const& [unused, adapter] : adapters_) {
      adapter->interrupt();
    }
    return;
  }
  hasEvents_ = true;
  auto& adapter = adapters_[event->adapter];
  if (!adapter) {
    adapter = std::make_unique<Adapter>(event->adapter);
  }
  adapter->eventIs(*event, number);
}

std::map<std::string, RecordedSlot> KernelTrace::end() {
  if (!hasEvents_) {
    throw UsageError("no recording, and no trace of i2c or smbus events either");
  }
  double start = std::numeric_limits<double>::infinity();
  for (auto const& [unused, adapter] : adapters_) {
    start = std::min(start, adapter->start());
  }
  std::map<std::string, RecordedSlot> buses;
  for (auto const& [number, adapter] : adapters_) {
    RecordedSlot bus = adapter->end(start);
    losses_.addTo(bus.doubts, "events were lost here");
    if (!bus.transactions.empty()) {
      buses.emplace(linuxBusName(number), std::move(bus));
    }
  }
  return buses;
}

}  // namespace Agent
