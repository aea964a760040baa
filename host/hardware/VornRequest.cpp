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

namespace {

bool isTransaction(VornRequest::Loaded loaded) {
  return loaded == VornRequest::Loaded::read || loaded == VornRequest::Loaded::writeAndRead;
}

}  // namespace

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
  Loaded const before = isReplacing_ ? Loaded::nothing : loaded_;
  if (opcode == VornOp::kWrite) {
    auto const bytes = data.buffer().bytes();
    if (length > bytes.size()) {
      Kex::throwRangeException(
          Kex::format("a write of %u of the %zu bytes of a buffer", length, bytes.size()));
    }
    std::copy_n(bytes.data(), length, transaction_.write.bytes.begin());
    transaction_.write.length = static_cast<Kex::U8>(length);
    loaded_ = before == Loaded::nothing ? Loaded::write : Loaded::others;
  } else {
    if (before == Loaded::nothing) {
      transaction_.write.length = 0;
    }
    transaction_.address = Smbus::VornAddress(address);
    transaction_.readLength = static_cast<Kex::U8>(length);
    target_ = &data.buffer();
    loaded_ = before == Loaded::nothing ? Loaded::read
              : before == Loaded::write ? Loaded::writeAndRead
                                        : Loaded::others;
  }
  isReplacing_ = false;
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
  if (isTransaction(loaded_)) {
    bus_->clientQEnq(*this);
  } else {
    handleReply(Smbus::Reply::failed(Smbus::ErrorKind::other, "the request holds no transaction"));
  }
}

std::span<Kex::U8 const> VornRequest::received() const {
  if (!isTransaction(loaded_)) {
    return {};
  }
  auto const bytes = target_->bytes();
  return bytes.first(std::min<std::size_t>(bytes.size(), transaction_.readLength));
}

void VornRequest::handleReply(Smbus::Reply const& reply) {
  error_ = reply.error;
  failure_ = reply.failure;
  if (reply.isOk) {
    if (target_->len() < transaction_.readLength) {
      return handleReply(
          Smbus::Reply::failed(Smbus::ErrorKind::other, "the buffer became shorter than the read"));
    }
    target_->bytesIs(0, reply.readOf(transaction_.readLength).view());
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
