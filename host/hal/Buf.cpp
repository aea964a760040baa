// Hal::Buf, the byte buffers of bus transfers and FRU areas.
#include "host/hal/Buf.h"

#include <algorithm>

#include "host/kex/base/Exception.h"
#include "host/kex/base/Format.h"
#include "host/kex/type/KexType.h"

namespace Hal {

using Kex::U32;
using Kex::U8;

namespace {

U32 checkedSize(std::size_t size) {
  if (size > BufBase::kMaxSize) {
    Kex::throwRangeException(
        Kex::format("a buffer of %zu bytes; it may have %u", size, BufBase::kMaxSize));
  }
  return static_cast<U32>(size);
}

}  // namespace

Kex::KexType& BufBase::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<BufBase>("Hal::BufBase", &Kex::PtrInterface::_fwkType());
  return record;
}

Kex::KexType& BufBase::fwkType() const { return _fwkType(); }

BufBase::BufBase(U32 size) : bytes_(checkedSize(size)) {}

BufBase::~BufBase() = default;

void BufBase::lenIs(U32 length) {
  if (length > size()) {
    Kex::throwRangeException(
        Kex::format("length %u of a buffer with a capacity of %u bytes", length, size()));
  }
  len_ = length;
}

void BufBase::throwNoByte(U32 index) const {
  Kex::throwRangeException(Kex::format("byte %u of a buffer of %u bytes", index, len_));
}

void BufBase::bytesIs(U32 offset, std::span<U8 const> bytes) {
  if (offset > len_ || bytes.size() > len_ - offset) {
    Kex::throwRangeException(
        Kex::format("%zu bytes at %u of a buffer of %u bytes", bytes.size(), offset, len_));
  }
  std::ranges::copy(bytes, bytes_.data() + offset);
}

Kex::String8 BufBase::str() const { return Kex::String8(bytes()); }

void BufBase::strIs(Kex::String8 const& text) {
  U32 const length = checkedSize(text.view().size());
  bytes_.resize(std::max(size(), length));
  std::ranges::copy(text.view(), bytes_.begin());
  len_ = length;
}

void BufBase::doAppend(std::span<U8 const> bytes) {
  U32 const length = checkedSize(len_ + bytes.size());
  if (length > size()) {
    // The bytes may be the buffer's own, so both are copied before the old ones go.
    std::vector<U8> grown(length);
    std::ranges::copy(this->bytes(), grown.begin());
    std::ranges::copy(bytes, grown.data() + len_);
    bytes_.swap(grown);
  } else {
    std::ranges::copy(bytes, bytes_.data() + len_);
  }
  len_ = length;
}

void BufBase::capacityIs(U32 size) {
  bytes_.resize(checkedSize(size));
  len_ = std::min(len_, size);
}

Kex::KexType& Buf::_fwkType() {
  static Kex::KexType& record = Kex::newHostType<Buf>("Hal::Buf", &BufBase::_fwkType());
  return record;
}

Kex::KexType& Buf::fwkType() const { return _fwkType(); }

Buf::~Buf() = default;

}  // namespace Hal
