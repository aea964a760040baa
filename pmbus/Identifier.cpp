// Emerson::PmbusIdentifier::Identifier: construction, addresses, table, arming of transfers.
#include "pmbus/Identifier.h"

#include <algorithm>
#include <utility>

#include "pmbus/Trace.h"

namespace Emerson::PmbusIdentifier {

namespace {

using Hardware::VornOp;

constexpr Kex::U32 kReadBufSize = 1 + Identifier::kMaxBytesReadInProcessCall;
/// First byte of a FRU read's written block: one byte follows.
constexpr Kex::U8 kWriteCount = 0x01;

}  // namespace

Identifier::Identifier(Kex::Ptr<Kex::Clock const> const& clock,
                       Kex::Ptr<Hardware::PowerSupplySlot::SlotConfig const> const& config,
                       Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus> const& status,
                       Kex::Ptr<Hardware::VornRequest> const& pollForInsertionRequest,
                       Kex::Ptr<Hardware::VornRequest> const& identifySupplyRequest,
                       Kex::Ptr<Hardware::VornRequest> const& checkSupplyRequest,
                       Kex::Ptr<Fru::IntCtrl> const& presentIntCtrl,
                       Kex::Ptr<Kex::FileDescriptor const> const& presentIntFd,
                       Kex::Ptr<Fru::Gpo> const& presentGpo, Hardware::SmbusDeviceId deviceId,
                       unsigned char fruInfoCommand)
    : IdentifierBase(clock, config, status, pollForInsertionRequest, identifySupplyRequest,
                     checkSupplyRequest, presentIntCtrl, presentIntFd, presentGpo),
      deviceId_(deviceId),
      fruInfoCommand_(fruInfoCommand) {
  notifierIs(clock);
  isRegisteredNotifieeIs(true);
  Identifier::identifierNameIs("EmersonPmbus");
  mfrIdSupportedIs("EMERSON", true);
  mfrIdSupportedIs("ARTESYN", true);
  pollForInsertionWriteBufIs(TransferBuf::kWriteLength);
  identifySupplyWriteBufIs(TransferBuf::kWriteLength);
  checkSupplyWriteBufIs(TransferBuf::kWriteLength);
  pollForInsertionReadBufIs(kReadBufSize);
  identifySupplyReadBufIs(kReadBufSize);
  checkSupplyReadBufIs(kReadBufSize);
  derivedConstructedIs(true);
  Identifier::constructedIs(derivedConstructed_);
}

Identifier::~Identifier() {
  Identifier::kexDoZombieReactors(true);
  pollForInsertionWriteBufDel();
  identifySupplyWriteBufDel();
  checkSupplyWriteBufDel();
  pollForInsertionReadBufDel();
  identifySupplyReadBufDel();
  checkSupplyReadBufDel();
}

void Identifier::hasNotificationActiveIs(bool active) {
  if (active != hasNotificationActive()) {
    IdentifierBase::hasNotificationActiveIs(active);
  }
}

void Identifier::kexDoZombieReactors(bool on) {
  if (on == isMarkedForDeletion()) {
    return;
  }
  if (notifier()) {
    // In the destructor this class's own is meant.
    hasNotificationActiveIs(!on);  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
  }
  IdentifierBase::kexDoZombieReactors(on);
  isMarkedForDeletionIs(on);
}

void Identifier::derivedConstructedIs(bool derivedConstructed) {
  if (derivedConstructed_ != derivedConstructed) {
    derivedConstructed_ = derivedConstructed;
    // In the constructor this class's own is meant.
    constructedIs(derivedConstructed);  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
  }
}

void Identifier::constructedIs(bool isConstructed) {
  if (constructed() != isConstructed) {
    PowerSupplyDetector::IdentifierBase::constructedIs(isConstructed);
    handleConstructed();
  }
}

void Identifier::handleConstructed() {
  if (constructed() && state() == kInitial) {
    stateIs(kConstructed);
  }
}

void Identifier::doInitialize() {
  if (!constructed()) {
    return;
  }
  idpromIs();
  vornAddr_.deviceIs(Smbus::U7(deviceId_.value()));
  vornAddr_.offsetIs(fruInfoCommand_);
  vornAddr_.busTimeoutIs(kBusTimeout);
  mfrIdAddr_.deviceIs(Smbus::U7(deviceId_.value()));
  mfrIdAddr_.offsetIs(kMfrIdCommand);
  mfrIdAddr_.busTimeoutIs(kBusTimeout);
  repairBuffers();
  armMfrIdRead();
  initializedIs(true);
}

void Identifier::doResetIdentifier() {
  Kex::trace(traceHandle(), 3, [&](std::ostream& out) {
    out << "PowerSupplySlot " << slotName() << ": Identifier::doResetIdentifier() " << slotName();
  });
  mfrIdIs("");
  repairBuffers();
  armMfrIdRead();
  pollForInsertionRequest()->activeIs(true);
}

void Identifier::repairBuffers() {
  Kex::U32 const pollLength = 1 + std::max(longestMfrIdLength(), commonAreaBuf()->len());
  std::pair<TransferBuf&, Kex::U32> const lengths[] = {
      {pollWriteBuf_, TransferBuf::kWriteLength},     {pollReadBuf_, pollLength},
      {identifyWriteBuf_, TransferBuf::kWriteLength}, {identifyReadBuf_, kReadBufSize},
      {checkWriteBuf_, TransferBuf::kWriteLength},    {checkReadBuf_, kReadBufSize}};
  for (auto const& [buffer, length] : lengths) {
    buffer.repair(length);
  }
}

bool Identifier::mfrIdSupported(Kex::String8 const& key) const {
  auto const entry = mfrIdSupported_.member(key);
  return entry && entry->value();
}

void Identifier::mfrIdSupportedIs(Kex::String8 const& key, bool value) {
  if (auto const entry = mfrIdSupported_.member(key)) {
    entry->valueIs(value);
  } else {
    newMfrIdSupported(key, value);
  }
}

Kex::Ptr<KexMfrIdSupported> Identifier::newMfrIdSupported(Kex::String8 const& key, bool value) {
  auto entry = Kex::make<KexMfrIdSupported>(key, value);
  mfrIdSupported_.memberIs(entry);
  return entry;
}

void Identifier::mfrIdSupportedDel(MfrIdSupportedIterator& position) {
  mfrIdSupported_.memberDel(position->key());
}

Kex::U32 Identifier::longestMfrIdLength() const {
  Kex::U32 longest = 0;
  for (auto walk = mfrIdSupported_.begin(); walk; ++walk) {
    longest = std::max(longest, walk->key().len());
  }
  return std::min(longest, kMaxBytesReadInProcessCall);
}

void Identifier::armMfrIdRead() {
  Hal::Buf& readBuf = *pollForInsertionReadBuf();
  Hardware::VornRequest& request = *pollForInsertionRequest();
  readBuf.lenIs(longestMfrIdLength() + 1);
  request.activeIs(false);
  request.doMakeOp(VornOp::kRead, mfrIdAddr_.encoded(), readBuf.data(), readBuf.len(), 1,
                   static_cast<Kex::U8>(readBuf.len()), 1);
}

void Identifier::armFruRead(Hardware::VornRequest& request, Hal::Buf& writeBuf, Hal::Buf& readBuf,
                            Kex::U8 offset, Kex::U32 length) {
  writeBuf.byteIs(0, kWriteCount);
  writeBuf.byteIs(1, offset);
  readBuf.lenIs(length + 1);
  request.activeIs(false);
  request.doMakeOp(VornOp::kWrite, vornAddr_.encoded(), writeBuf.data(), writeBuf.len(), 1, 1, 1);
  request.doMakeOp(VornOp::kRead, vornAddr_.encoded(), readBuf.data(), readBuf.len(), 1, 1, 1);
}

}  // namespace Emerson::PmbusIdentifier
