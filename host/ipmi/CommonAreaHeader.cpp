// Ipmi::CommonAreaHeader, the FRU common header.
#include "host/ipmi/CommonAreaHeader.h"

#include <algorithm>

#include "host/kex/base/Format.h"
#include "host/kex/type/KexType.h"

namespace Ipmi {

namespace {

/// What a memory holds that nobody has written to, and what it is called.
struct BlankMemory {
  Kex::U8 byte;
  char const* meaning;
};

constexpr BlankMemory kBlankMemories[] = {
    {0xFF, "the memory is erased"},
    {0x00, "the memory is empty"},
};

}  // namespace

Kex::KexType& CommonAreaHeader::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<CommonAreaHeader>("Ipmi::CommonAreaHeader", &PtrInterface::_fwkType());
  return record;
}

Kex::Ptr<CommonAreaHeader> CommonAreaHeader::CommonAreaHeaderIs(Kex::Ptr<Hal::Buf> const& buffer) {
  return Kex::make<CommonAreaHeader>(*buffer);
}

CommonAreaHeader::CommonAreaHeader(Hal::Buf const& buffer)
    : bytes_(firstBytes<kLength>(buffer.bytes())),
      checksumValid_(buffer.len() != 0 && isZeroSum(bytes_)) {}

std::optional<RecordFault> CommonAreaHeader::fault() const {
  for (auto const& [byte, meaning] : kBlankMemories) {
    if (std::ranges::count(bytes_, byte) == kLength) {
      return RecordFault{
          kVersion, Kex::format("the FRU common header is 0x%02X throughout: %s", byte, meaning)};
    }
  }
  if (ipmiVersion() != 1) {
    return RecordFault{kVersion,
                       Kex::format("the FRU common header has version %u, not 1", ipmiVersion())};
  }
  if (!checksumValid()) {
    return RecordFault{
        kChecksum, Kex::format("the FRU common header's checksum is 0x%02X, where "
                               "0x%02X would be right",
                               bytes_[kChecksum], checksumOf(std::span(bytes_).first(kChecksum)))};
  }
  if (productAreaOffset() != 0) {
    return std::nullopt;
  }
  unsigned const start = bytes_[kProductArea] * 8U;
  return RecordFault{kProductArea,
                     start == 0 ? "the FRU common header names no product info area"
                                : Kex::format("the FRU common header names a product info area at "
                                              "0x%x, which no one-byte offset reaches",
                                              start)};
}

Kex::KexType& CommonAreaHeader::fwkType() const { return _fwkType(); }

CommonAreaHeader::~CommonAreaHeader() = default;

}  // namespace Ipmi
