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

BufBase::BufBase(U32 size) { capacityIs(size); }

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
  std::copy_n(bytes.data(), bytes.size(), start() + offset);
}

Kex::String8 BufBase::str() const { return Kex::String8(bytes()); }

void BufBase::strIs(Kex::String8 const& text) {
  U32 const length = checkedSize(text.view().size());
  grownTo(length);
  std::copy_n(text.charPtr(), length, start());
  len_ = length;
}

void BufBase::doAppend(std::span<U8 const> bytes) {
  U32 const length = checkedSize(len_ + bytes.size());
  // They may stand in what is replaced, which goes last.
  auto const before = grownTo(length);
  std::copy_n(bytes.data(), bytes.size(), start() + len_);
  len_ = length;
}

void BufBase::capacityIs(U32 size) {
  grownTo(checkedSize(size));
  size_ = size;
  len_ = std::min(len_, size);
}

std::unique_ptr<U8[]> BufBase::grownTo(U32 size) {
  std::unique_ptr<U8[]> before;
  if (size > std::max(size_, kOwn)) {
    auto grown = std::make_unique<U8[]>(size);
    std::copy_n(start(), size_, grown.get());
    before = std::exchange(more_, std::move(grown));
  } else if (size > size_) {
    std::fill_n(start() + size_, size - size_, U8{0});
  }
  size_ = std::max(size_, size);
  return before;
}

Kex::KexType& Buf::_fwkType() {
  static Kex::KexType& record = Kex::newHostType<Buf>("Hal::Buf", &BufBase::_fwkType());
  return record;
}

Kex::KexType& Buf::fwkType() const { return _fwkType(); }

Buf::~Buf() = default;

}  // namespace Hal
