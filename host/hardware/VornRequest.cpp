// Hardware::VornRequest, one bus request of a slot.
#include "host/hardware/VornRequest.h"

#include <algorithm>
#include <utility>

#include "host/kex/base/Exception.h"
#include "host/kex/base/Format.h"
#include "host/kex/type/KexType.h"

namespace Kex {

std::ostream& operator<<(std::ostream& out, Request::Status status) {
  switch (status) {
    case Request::kIdle: return out << "idle";
    case Request::kRunning: return out << "running";
    case Request::kFailed: return out << "failed";
    case Request::kSucceeded: return out << "succeeded";
  }
  return out << static_cast<unsigned>(status);
}

}  // namespace Kex

namespace Hardware {

using Kex::Request;

Kex::KexType& VornRequest::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<VornRequest>("Hardware::VornRequest", &PtrInterface::_fwkType());
  return record;
}

Kex::KexType& VornRequest::fwkType() const { return _fwkType(); }

VornRequest::~VornRequest() {
  if (bus_) {
    bus_->clientDel(*this);
  }
}

void VornRequest::handlerIs(Handler* handler) {
  Handler* const before = std::exchange(handler_, handler);
  if (before != nullptr && before != handler && !before->isOwnDoing(*this)) {
    activeIs(false);
  }
}

void VornRequest::doMakeOp(VornOp::Opcode opcode, Kex::U64 address, Hal::BufData const& data,
                           Kex::U32 length, Kex::U8, Kex::U8, Kex::U32) {
  if (length == 0 || length > Smbus::kMaxBlock) {
    Kex::throwRangeException(
        Kex::format("an operation of %u bytes does not fit an SMBus block", length));
  }
  bool const isReplacing = isReplacing_;
  if (handler_ != nullptr && !handler_->isOwnDoing(*this)) {
    activeIs(false);
    // What is loaded in a row belongs together, whoever loads it.
    isReplacing_ = isReplacing;
  }
  Smbus::VornAddress const decoded(address);
  Smbus::Block written;
  if (opcode == VornOp::kWrite) {
    for (Kex::U32 i = 0; i < length; ++i) {
      written.bytes[i] = data.buffer().byte(i);
    }
    written.length = static_cast<Kex::U8>(length);
  }
  if (isReplacing_) {
    operations_.clear();
    isReplacing_ = false;
  }
  operations_.emplace_back(opcode, decoded, data, length, written);
}

void VornRequest::activeIs(bool active) {
  if (handler_ != nullptr && !handler_->isOwnDoing(*this)) {
    active = false;
  }
  if (status_ == Request::kRunning) {
    bus_->clientDel(*this);
  }
  dequeue();
  status_ = Request::kIdle;
  isActive_ = active;
  isReplacing_ = isReplacing_ || !active;
  if (!active) {
    return;
  }
  ++activations_;
  status_ = Request::kRunning;
  if (isTransaction()) {
    bus_->clientQEnq(*this);
  } else {
    handleReply(Smbus::Reply::failed(Smbus::ErrorKind::other, "the request holds no transaction"));
  }
}

bool VornRequest::isTransaction() const {
  auto const is = [this](std::size_t index, VornOp::Opcode opcode) {
    return operations_[index].opcode == opcode;
  };
  return (operations_.size() == 1 && is(0, VornOp::kRead)) ||
         (operations_.size() == 2 && is(0, VornOp::kWrite) && is(1, VornOp::kRead));
}

Smbus::Transaction VornRequest::transaction() const {
  VornOp const& read = operations_.back();
  return {.address = read.address,
          .write = operations_.front().written,
          .readLength = static_cast<Kex::U8>(read.length)};
}

std::span<Kex::U8 const> VornRequest::received() const {
  if (operations_.empty() || operations_.back().opcode != VornOp::kRead) {
    return {};
  }
  VornOp const& read = operations_.back();
  auto const bytes = read.data.buffer().bytes();
  return bytes.first(std::min<std::size_t>(bytes.size(), read.length));
}

void VornRequest::handleReply(Smbus::Reply const& reply) {
  error_ = reply.error;
  failure_ = reply.failure;
  if (reply.isOk) {
    VornOp const& read = operations_.back();
    if (read.data.buffer().len() < read.length) {
      return handleReply(
          Smbus::Reply::failed(Smbus::ErrorKind::other, "the buffer became shorter than the read"));
    }
    read.data.buffer().bytesIs(0, reply.readOf(static_cast<Kex::U8>(read.length)).view());
  }
  statusIs(reply.isOk ? Request::kSucceeded : Request::kFailed);
}

void VornRequest::statusIs(Request::Status terminal) {
  status_ = terminal;
  enqueue();
}

void VornRequest::run() {
  Kex::Ptr<VornRequest> const self(this);
  Kex::U64 const activation = activations_;
  if (handler_ != nullptr) {
    handler_->handleStatus(*this);
  }
  if (activation == activations_) {
    status_ = Request::kIdle;
    isActive_ = false;
  }
}

}  // namespace Hardware
