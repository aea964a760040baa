// Ipmi::CommonAreaHeader, the FRU common header.
#include "host/ipmi/CommonAreaHeader.h"

#include <algorithm>
#include <numeric>

#include "host/kex/type/KexType.h"

namespace Ipmi {

bool isZeroSum(std::span<Kex::U8 const> bytes) {
  return !bytes.empty() && std::accumulate(bytes.begin(), bytes.end(), 0U) % 256 == 0;
}

Kex::KexType& CommonAreaHeader::_fwkType() {
  static Kex::KexType& record =
      Kex::newHostType<CommonAreaHeader>("Ipmi::CommonAreaHeader", &PtrInterface::_fwkType());
  return record;
}

Kex::Ptr<CommonAreaHeader> CommonAreaHeader::CommonAreaHeaderIs(Kex::Ptr<Hal::Buf> const& buffer) {
  return Kex::make<CommonAreaHeader>(*buffer);
}

CommonAreaHeader::CommonAreaHeader(Hal::Buf const& buffer)
    : checksumValid_(isZeroSum(buffer.bytes())) {
  std::ranges::copy(buffer.bytes().first(std::min<std::size_t>(kLength, buffer.len())),
                    bytes_.begin());
}

Kex::KexType& CommonAreaHeader::fwkType() const { return _fwkType(); }

CommonAreaHeader::~CommonAreaHeader() = default;

}  // namespace Ipmi
