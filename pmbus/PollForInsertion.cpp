// The poll: is a supply there that this module can identify?
#include "pmbus/Identifier.h"

#include "host/kex/base/Assert.h"
#include "pmbus/Trace.h"

namespace Emerson::PmbusIdentifier {

void Identifier::handlePollForInsertionRequest() {
  if (!constructed()) {
    return;
  }
  auto const status = pollForInsertionRequest()->status();
  Kex::trace(traceHandle(), 3, [&](std::ostream& out) {
    out << "PowerSupplySlot " << slotName() << ": Identifier::handlePollForInsertionRequest("
        << status << ")";
  });
  if (status == Kex::Request::kFailed) {
    doPollForInsertionRequestComplete(false);
    serialNumIs("");
    mfrIdIs("");
  } else if (status == Kex::Request::kSucceeded) {
    failCountIs(0);
    mfrId_.empty() ? handleMfrId() : handleCommonHeader();
  }
}

bool Identifier::isMfrIdSupported() {
  if (mfrIdSupported(mfrId_)) {
    return true;
  }
  Kex::trace(traceHandle(), 4,
             [&](std::ostream& out) { out << slotName() << ": MFR_ID is not supported"; });
  doPollForInsertionRequestComplete(false);
  return false;
}

void Identifier::handleMfrId() {
  // All that was asked for, whatever the count byte says: a shorter MFR_ID is padded.
  mfrIdIs(pollForInsertionReadBuf()->str().substr(1));
  if (!isMfrIdSupported()) {
    mfrIdIs("");
    return;
  }
  Kex::trace(traceHandle(), 3, [&](std::ostream& out) {
    out << "PowerSupplySlot " << slotName() << ": Setting up request for FRU data header";
  });
  armFruRead(*pollForInsertionRequest(), *pollForInsertionWriteBuf(), *pollForInsertionReadBuf(), 0,
             commonAreaBuf()->len());
  pollForInsertionRequest()->activeIs(true);
}

void Identifier::handleCommonHeader() {
  if (!isMfrIdSupported()) {
    return;
  }
  Kex::U32 const length = commonAreaBuf()->len();
  if (pollForInsertionReadBuf()->byte(0) < length) {
    Kex::trace(traceHandle(), 4, [&](std::ostream& out) {
      out << slotName() << ": incomplete read of common header";
    });
    doPollForInsertionRequestComplete(false);
    return;
  }
  Kex::assertThat(pollForInsertionReadBuf()->len() - 1 == length,
                  "pollForInsertionReadBuf()->len() - 1 == n");
  commonAreaBuf()->bytesIs(0, pollForInsertionReadBuf()->bytes().subspan(1));
  auto const header = Ipmi::CommonAreaHeader::CommonAreaHeaderIs(commonAreaBuf());
  idprom()->headerIs(header);
  if (header->ipmiVersion() != 1 || !header->checksumValid() || header->productAreaOffset() == 0) {
    Kex::trace(traceHandle(), 4,
               [&](std::ostream& out) { out << slotName() << " not ipmi version 1"; });
    doPollForInsertionRequestComplete(false);
    return;
  }
  Kex::trace(traceHandle(), 4,
             [&](std::ostream& out) { out << slotName() << " is ipmi version 1"; });
  armFruRead(*identifySupplyRequest(), *identifySupplyWriteBuf(), *identifySupplyReadBuf(),
             header->productAreaOffset(), productInfoHeaderBuf()->len());
  productInfoBufDel();
  Kex::trace(traceHandle(), 4, [&](std::ostream& out) { out << "state: " << state(); });
  doPollForInsertionRequestComplete(true);
}

}  // namespace Emerson::PmbusIdentifier
