// Emerson::PmbusIdentifier::Identifier, what finds and reads the supply of one slot.
#pragma once

#include "host/detector/IpmiIdentifierBase.h"
#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/Holder.h"
#include "host/smbus/VornAddress.h"
#include "pmbus/MfrIdSupported.h"
#include "pmbus/TransferBuf.h"

namespace Emerson::PmbusIdentifier {

/// Identifies a supply over PMBus: reads its manufacturer identity (MFR_ID, command 0x99), then its
/// IPMI FRU data by block-write/block-read process calls of at most 16 data bytes through a
/// command of the supply's own. The three requests are the poll (MFR_ID, FRU common header),
/// identification (product info area), and the check (serial number or area header again).
class Identifier : public Ipmi::IdentifierBase {
 public:
  /// Walks the table of manufacturer identities.
  class MfrIdSupportedIterator;
  class MfrIdSupportedIteratorConst;

  /// Largest data count that one FRU read may ask for.
  static constexpr Kex::U32 kMaxBytesReadInProcessCall = 16;
  /// PMBus command code of MFR_ID (PMBus, part II, section 22.2.1).
  static constexpr Kex::U8 kMfrIdCommand = 0x99;
  /// Longest time of one transaction, in milliseconds.
  static constexpr Hardware::SmbusTimeout kBusTimeout{1000};
  /// Attempts at a transaction of identification or check before it is given up.
  static constexpr Kex::U8 kAttempts = 4;

  static Kex::KexType& _fwkType();

  /// `deviceId` is the supply's 7-bit address, `fruInfoCommand` the command through which its FRU
  /// data is read; the others go to the base. Touches no request.
  Identifier(Kex::Ptr<Kex::Clock const> const& clock,
             Kex::Ptr<Hardware::PowerSupplySlot::SlotConfig const> const& config,
             Kex::Ptr<Hardware::PowerSupplySlot::SlotStatus> const& status,
             Kex::Ptr<Hardware::VornRequest> const& pollForInsertionRequest,
             Kex::Ptr<Hardware::VornRequest> const& identifySupplyRequest,
             Kex::Ptr<Hardware::VornRequest> const& checkSupplyRequest,
             Kex::Ptr<Fru::IntCtrl> const& presentIntCtrl,
             Kex::Ptr<Kex::FileDescriptor const> const& presentIntFd,
             Kex::Ptr<Fru::Gpo> const& presentGpo, Hardware::SmbusDeviceId deviceId,
             unsigned char fruInfoCommand);

  void hasNotificationActiveIs(bool active) override;
  Kex::KexType& fwkType() const override;
  ~Identifier() override;

  /// Sets both addresses and loads the MFR_ID read. Throws a range exception when `deviceId` is
  /// above 0x7F.
  void doInitialize() override;
  void handlePollForInsertionRequest() override;
  void handleIdentifySupplyRequest() override;
  void handleCheckSupplyRequest() override;
  /// Loads the MFR_ID read and starts it.
  void doResetIdentifier() override;
  void constructedIs(bool constructed) override;
  void kexDoZombieReactors(bool on) override;

  /// Loads the check with a re-read of the serial number, at most its first 16 bytes, when the
  /// supply is `supported` and has one; else of the product info area's header.
  void doSetupCheckSupplyRequest(bool supported);
  void derivedConstructedIs(bool derivedConstructed);
  /// Moves a constructed identifier on from the initial state.
  void handleConstructed();

  Hardware::SmbusDeviceId deviceId() const { return deviceId_; }
  /// PMBus command code through which FRU data is read.
  Kex::U8 fruInfoCommand() const { return fruInfoCommand_; }
  /// Address of every FRU read.
  Smbus::VornAddress const& vornAddr() const { return vornAddr_; }
  void vornAddrIs(Smbus::VornAddress const& address) { vornAddr_ = address; }
  /// The encoding of `vornAddr`.
  Kex::U64 fruInfoAddr() const { return vornAddr_.encoded(); }
  void fruInfoAddrIs(Kex::U64 encoded) { vornAddr_ = Smbus::VornAddress(encoded); }
  /// Bytes of data, the count byte aside.
  Kex::U32 maxBytesReadInProcessCall() const { return kMaxBytesReadInProcessCall; }
  Smbus::VornAddress const& mfrIdAddr() const { return mfrIdAddr_; }
  void mfrIdAddrIs(Smbus::VornAddress const& address) { mfrIdAddr_ = address; }
  /// The MFR_ID text read from the supply; empty means not read yet.
  Kex::String8 const& mfrId() const { return mfrId_; }
  void mfrIdIs(Kex::String8 mfrId) { mfrId_ = std::move(mfrId); }
  bool derivedConstructed() const { return derivedConstructed_; }

  /// Whether a manufacturer identity is accepted: exact bytes, whole length; false when absent.
  bool mfrIdSupported(Kex::String8 const& key) const;
  void mfrIdSupportedIs(Kex::String8 const& key, bool value);
  Kex::Ptr<KexMfrIdSupported> newMfrIdSupported(Kex::String8 const& key, bool value);
  void mfrIdSupportedDel(Kex::String8 const& key) { mfrIdSupported_.memberDel(key); }
  void mfrIdSupportedDel(MfrIdSupportedIterator& position);
  void mfrIdSupportedDelAll() { mfrIdSupported_.memberDelAll(); }
  /// Tells nobody: the collection has no reactions.
  void mfrIdSupportedNotify(Kex::String8 const& /*key*/) {}
  MfrIdTable const& mfrIdSupportedTable() const { return mfrIdSupported_; }

  using BufPtr = TransferBuf::BufPtr;
  using Size = Kex::U32;

  /// @name The six transfer buffers
  /// @{

  /// The buffer; a new one of `size` bytes; the one that there is, resized to `size` bytes, else a
  /// new one; the one that was there, cleared. As `TransferBuf` does it, with its errors.
  BufPtr const& pollForInsertionWriteBuf() const { return pollWriteBuf_.buf(); }
  BufPtr newPollForInsertionWriteBuf(Size size) const { return pollWriteBuf_.create(size); }
  BufPtr pollForInsertionWriteBufIs(Size size) { return pollWriteBuf_.sizeIs(size); }
  BufPtr pollForInsertionWriteBufDel() { return pollWriteBuf_.del(); }
  BufPtr const& identifySupplyWriteBuf() const { return identifyWriteBuf_.buf(); }
  BufPtr newIdentifySupplyWriteBuf(Size size) const { return identifyWriteBuf_.create(size); }
  BufPtr identifySupplyWriteBufIs(Size size) { return identifyWriteBuf_.sizeIs(size); }
  BufPtr identifySupplyWriteBufDel() { return identifyWriteBuf_.del(); }
  BufPtr const& checkSupplyWriteBuf() const { return checkWriteBuf_.buf(); }
  BufPtr newCheckSupplyWriteBuf(Size size) const { return checkWriteBuf_.create(size); }
  BufPtr checkSupplyWriteBufIs(Size size) { return checkWriteBuf_.sizeIs(size); }
  BufPtr checkSupplyWriteBufDel() { return checkWriteBuf_.del(); }
  BufPtr const& pollForInsertionReadBuf() const { return pollReadBuf_.buf(); }
  BufPtr newPollForInsertionReadBuf(Size size) const { return pollReadBuf_.create(size); }
  BufPtr pollForInsertionReadBufIs(Size size) { return pollReadBuf_.sizeIs(size); }
  BufPtr pollForInsertionReadBufDel() { return pollReadBuf_.del(); }
  BufPtr const& identifySupplyReadBuf() const { return identifyReadBuf_.buf(); }
  BufPtr newIdentifySupplyReadBuf(Size size) const { return identifyReadBuf_.create(size); }
  BufPtr identifySupplyReadBufIs(Size size) { return identifyReadBuf_.sizeIs(size); }
  BufPtr identifySupplyReadBufDel() { return identifyReadBuf_.del(); }
  BufPtr const& checkSupplyReadBuf() const { return checkReadBuf_.buf(); }
  BufPtr newCheckSupplyReadBuf(Size size) const { return checkReadBuf_.create(size); }
  BufPtr checkSupplyReadBufIs(Size size) { return checkReadBuf_.sizeIs(size); }
  BufPtr checkSupplyReadBufDel() { return checkReadBuf_.del(); }
  /// @}

 private:
  Kex::String8 const& slotName() const { return config()->name().str(); }

  /// Length of the longest key of the table, at most what one read carries.
  Kex::U32 longestMfrIdLength() const;
  /// Buffers are reached by name: each detection begins with such as serve it.
  void repairBuffers();
  void armMfrIdRead();
  /// Loads `request` with a FRU read: `length` data bytes from `offset` on, not started.
  void armFruRead(Hardware::VornRequest& request, Hal::Buf& writeBuf, Hal::Buf& readBuf,
                  Kex::U8 offset, Kex::U32 length);

  void handleMfrId();
  void handleCommonHeader();
  bool isMfrIdSupported();

  void handleProductInfoHeader();
  void handleProductInfoChunk();
  void readRestOfProductInfo();
  void handleProductInfo();
  void generateFdl();
  /// Ends an identification whose supply has no usable product info area.
  void giveUpProductInfo(bool hwError);
  void abandonIdentification();
  Kex::U8 productInfoLength() const;

  void handleCheckedBytes();

  Hardware::SmbusDeviceId deviceId_;
  Kex::U8 fruInfoCommand_;
  Smbus::VornAddress vornAddr_;
  Smbus::VornAddress mfrIdAddr_;
  Kex::String8 mfrId_;
  MfrIdTable mfrIdSupported_{1};
  TransferBuf pollWriteBuf_{TransferBuf::Use::write, members(), "pollForInsertionWriteBuf"};
  TransferBuf identifyWriteBuf_{TransferBuf::Use::write, members(), "identifySupplyWriteBuf"};
  TransferBuf checkWriteBuf_{TransferBuf::Use::write, members(), "checkSupplyWriteBuf"};
  TransferBuf pollReadBuf_{TransferBuf::Use::read, members(), "pollForInsertionReadBuf"};
  TransferBuf identifyReadBuf_{TransferBuf::Use::read, members(), "identifySupplyReadBuf"};
  TransferBuf checkReadBuf_{TransferBuf::Use::read, members(), "checkSupplyReadBuf"};
  /// Chunks in a row, failures aside, that brought nothing.
  Kex::U8 emptyChunks_ = 0;
  bool derivedConstructed_ = false;
};

/// A walk over the manufacturer identities; the identifier outlives it.
class Identifier::MfrIdSupportedIterator {
 public:
  explicit MfrIdSupportedIterator(Identifier& identifier)
      : walk_(identifier.mfrIdSupported_.begin()) {}

  explicit operator bool() const { return bool(walk_); }
  KexMfrIdSupported* operator->() const { return walk_.operator->(); }
  MfrIdSupportedIterator& operator++() {
    ++walk_;
    return *this;
  }

 private:
  MfrIdTable::Iterator walk_;
};

/// The same walk through the generic interface.
class Identifier::MfrIdSupportedIteratorConst final : public Kex::GenericIterator {
 public:
  /// Holds `identifier` while it walks.
  explicit MfrIdSupportedIteratorConst(Kex::Ptr<Identifier const> const& identifier)
      : identifier_(identifier), walk_(identifier->mfrIdSupported_.begin()) {}

  bool isAtEnd() const override { return !walk_; }
  Kex::Ptr<Kex::GenericIf> key() const override { return Kex::holderOf(walk_->key()); }
  Kex::Ptr<Kex::GenericIf> value() const override { return Kex::holderOf(walk_->value()); }
  void advance() override { ++walk_; }

 private:
  Kex::Ptr<Identifier const> identifier_;
  MfrIdTable::Iterator walk_;
};

}  // namespace Emerson::PmbusIdentifier
