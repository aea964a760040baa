// Identification: read the product info area, record the serial number, ask the descriptors.
#include <algorithm>

#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/base/Assert.h"
#include "pmbus/Identifier.h"
#include "pmbus/Trace.h"

namespace Emerson::PmbusIdentifier {

namespace {

constexpr Kex::U8 kFormatVersion = 1;

}  // namespace

void Identifier::handleIdentifySupplyRequest() {
  if (!constructed()) {
    return;
  }
  auto const status = identifySupplyRequest()->status();
  Kex::trace(traceHandle(), 3, [&](std::ostream& out) {
    out << "PowerSupplySlot " << slotName() << ": Identifier::handleIdentifySupplyRequest("
        << status << ")";
  });
  if (status == Kex::Request::kFailed) {
    failCountIs(static_cast<Kex::U8>(failCount() + 1));
    if (failCount() < kAttempts) {
      identifySupplyRequest()->activeIs(true);
    } else {
      abandonIdentification();
    }
  } else if (status == Kex::Request::kSucceeded) {
    failCountIs(0);
    productInfoBuf() ? handleProductInfoChunk() : handleProductInfoHeader();
  }
}

void Identifier::abandonIdentification() {
  doIdentifySupplyRequestComplete(false);
  serialNumIs("");
  mfrIdIs("");
}

Kex::U8 Identifier::productInfoLength() const {
  return static_cast<Kex::U8>(productInfoHeaderBuf()->byte(1) * 8);
}

void Identifier::handleProductInfoHeader() {
  Hal::Buf const& readBuf = *identifySupplyReadBuf();
  Kex::U32 const byteCount = readBuf.byte(0);
  Kex::U32 const bytesExpected = productInfoHeaderBuf()->len();
  Kex::U32 const bytesRead = readBuf.len() - 1;
  if (byteCount < bytesExpected) {
    Kex::trace(traceHandle(), 4, [&](std::ostream& out) {
      out << slotName() << ": incomplete read of product info header: " << byteCount << " < "
          << bytesExpected;
    });
    doIdentifySupplyRequestComplete(false);
    return;
  }
  Kex::assertThat(byteCount >= bytesRead, "byteCount >= bytesRead");
  Kex::assertThat(bytesRead == bytesExpected, "bytesRead == bytesExpected");
  productInfoHeaderBuf()->bytesIs(0, readBuf.bytes().subspan(1));
  Kex::U8 const version = productInfoHeaderBuf()->byte(0);
  if (version != kFormatVersion) {
    Kex::trace(traceHandle(), 3, [&](std::ostream& out) {
      out << "PowerSupplySlot " << slotName() << ": unsupported product info version "
          << static_cast<char>(version);
    });
    giveUpProductInfo(false);
    return;
  }
  emptyChunks_ = 0;
  productInfoBufIs(productInfoLength());
  Kex::assertThat(productInfoBuf()->len() == 0, "productInfoBuf()->len() == 0");
  productInfoBuf()->strIs(productInfoHeaderBuf()->str());
  readRestOfProductInfo();
}

void Identifier::handleProductInfoChunk() {
  Hal::Buf const& readBuf = *identifySupplyReadBuf();
  Kex::U32 const n = std::min<Kex::U32>(readBuf.byte(0), readBuf.len() - 1);
  Kex::assertThat(productInfoBuf()->len() + n <= productInfoLength(),
                  "productInfoBuf()->len() + n <= productInfoLen");
  // A supply that answers but never delivers would keep the identification going for ever.
  emptyChunks_ = n == 0 ? static_cast<Kex::U8>(emptyChunks_ + 1) : Kex::U8{0};
  if (emptyChunks_ >= kAttempts) {
    abandonIdentification();
    return;
  }
  productInfoBuf()->doAppend(readBuf.bytes().subspan(1, n));
  readRestOfProductInfo();
}

void Identifier::readRestOfProductInfo() {
  Kex::U32 const length = productInfoBuf()->len();
  if (length >= productInfoLength()) {
    handleProductInfo();
    return;
  }
  Kex::U32 const bytesLeft = productInfoLength() - length;
  Kex::trace(traceHandle(), 4, [&](std::ostream& out) {
    out << "Bytes left to read in product info: " << bytesLeft;
  });
  armFruRead(*identifySupplyRequest(), *identifySupplyWriteBuf(), *identifySupplyReadBuf(),
             static_cast<Kex::U8>(idprom()->header()->productAreaOffset() + length),
             std::min(bytesLeft, kMaxBytesReadInProcessCall));
  identifySupplyRequest()->activeIs(true);
}

void Identifier::handleProductInfo() {
  auto const area = Ipmi::ProductInfoArea::ProductInfoAreaIs(productInfoBuf());
  idprom()->productInfoIs(area);
  if (!area->checksumValid()) {
    Kex::trace(traceHandle(), 4, [&](std::ostream& out) {
      out << slotName() << " product info checksum is not valid";
    });
    giveUpProductInfo(true);
    return;
  }
  serialNumIs(area->serialNumber());
  fdlIs("");
  hwErrorIs(false);
  generateFdl();
  doSetupCheckSupplyRequest(true);
  doIdentifySupplyRequestComplete(true);
}

void Identifier::generateFdl() {
  Kex::trace(traceHandle(), 4, [&](std::ostream& out) {
    out << slotName() << ": checking power supply descriptors";
  });
  auto const registry = Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  for (auto walk = registry->powerSupplyDescriptorIterator(); walk; ++walk) {
    walk->doGenerateFdl(idprom());
    if (walk->managed()) {
      Kex::trace(traceHandle(), 4, [&](std::ostream& out) {
        out << slotName() << ": identified as " << walk->name();
      });
      fdlIs(walk->fdl());
      return;
    }
  }
}

void Identifier::giveUpProductInfo(bool hwError) {
  fdlIs("");
  serialNumIs("");
  hwErrorIs(hwError);
  doSetupCheckSupplyRequest(false);
  doIdentifySupplyRequestComplete(true);
}

}  // namespace Emerson::PmbusIdentifier
