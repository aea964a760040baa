// The check: is the supply still there, and what is its serial number now?
#include <algorithm>

#include "pmbus/Identifier.h"
#include "pmbus/Trace.h"

namespace Emerson::PmbusIdentifier {

namespace {

/// Seconds from a failed check to its retry.
constexpr double kRetryDelay = 0.25;

}  // namespace

void Identifier::doSetupCheckSupplyRequest(bool supported) {
  Kex::trace(traceHandle(), 3, [&](std::ostream& out) {
    out << "PowerSupplySlot " << slotName() << ": Identifier::doSetupCheckSupplyRequest("
        << supported << ")";
  });
  Kex::U8 offset = idprom()->header()->productAreaOffset();
  Kex::U32 length = productInfoHeaderBuf()->len();
  auto const& area = idprom()->productInfo();
  if (supported && area && area->serialNumberLength() != 0) {
    offset = static_cast<Kex::U8>(offset + area->serialNumberOffset());
    // A longer serial number is known by what one transaction carries of it.
    length = std::min<Kex::U32>(area->serialNumberLength(), kMaxBytesReadInProcessCall);
  }
  armFruRead(*checkSupplyRequest(), *checkSupplyWriteBuf(), *checkSupplyReadBuf(), offset, length);
}

void Identifier::handleCheckSupplyRequest() {
  if (!constructed()) {
    return;
  }
  auto const status = checkSupplyRequest()->status();
  Kex::trace(traceHandle(), 3, [&](std::ostream& out) {
    out << "PowerSupplySlot " << slotName() << ": Identifier::handleCheckSupplyRequest(" << status
        << ")";
  });
  if (status == Kex::Request::kFailed) {
    failCountIs(static_cast<Kex::U8>(failCount() + 1));
    if (failCount() < kAttempts) {
      timeMinIs(notifier()->time() + kRetryDelay);
      return;
    }
    idprom()->headerIs({});
    doCheckSupplyRequestComplete(false);
    serialNumIs("");
    mfrIdIs("");
  } else if (status == Kex::Request::kSucceeded) {
    failCountIs(0);
    handleCheckedBytes();
  }
}

void Identifier::handleCheckedBytes() {
  Hal::Buf const& readBuf = *checkSupplyReadBuf();
  Kex::U32 const count = readBuf.byte(0);
  Kex::U32 const expected = readBuf.len() - 1;
  if (count < expected) {
    Kex::trace(traceHandle(), 4, [&](std::ostream& out) {
      out << slotName() << ": incomplete read by checkSupplyRequest: " << count << " < "
          << expected;
    });
    doCheckSupplyRequestComplete(false);
    return;
  }
  auto const bytes = readBuf.bytes().subspan(1);
  if (serialNum().empty()) {
    productInfoHeaderBuf()->bytesIs(
        0, bytes.first(std::min<std::size_t>(expected, productInfoHeaderBuf()->len())));
    serialNumIs("");
  } else {
    Hal::Buf& area = *productInfoBuf();
    auto const& product = *idprom()->productInfo();
    Kex::U32 const offset = product.serialNumberOffset();
    // Bytes that are there already, as in almost every check, say what they said before.
    bool const isSame = serialNum() == product.serialNumber() &&
                        area.len() >= offset + bytes.size() &&
                        std::ranges::equal(bytes, area.bytes().subspan(offset, bytes.size()));
    area.bytesIs(offset, bytes);
    serialNumIs(isSame
                    ? serialNum()
                    : Ipmi::ProductInfoArea::ProductInfoAreaIs(productInfoBuf())->serialNumber());
  }
  doCheckSupplyRequestComplete(true);
}

}  // namespace Emerson::PmbusIdentifier
