// The attributes of Emerson::PmbusIdentifier::Identifier, one row each.
#pragma once

#include "host/tables/Access.h"
#include "pmbus/Identifier.h"

namespace Emerson::PmbusIdentifier {

/// How the generic interface reaches `mfrIdSupported`.
struct MfrIdSupportedAccess {
  using Class = Identifier;

  static bool get(Identifier const& object, Kex::String8 const& key) {
    return object.mfrIdSupported(key);
  }
  static void set(Identifier& object, Kex::String8 const& key, bool value) {
    object.mfrIdSupportedIs(key, value);
  }
  static void del(Identifier& object, Kex::String8 const& key) { object.mfrIdSupportedDel(key); }
  static Kex::U32 size(Identifier const& object) { return object.mfrIdSupportedTable().size(); }
  static Kex::U32 buckets(Identifier const& object) {
    return object.mfrIdSupportedTable().buckets();
  }
  static Kex::Ptr<Kex::GenericIterator> iterator(Identifier const& object) {
    return Kex::make<Identifier::MfrIdSupportedIteratorConst>(Kex::Ptr<Identifier const>(&object));
  }
};

namespace Detail {

using Tables::AttrRow;
using Tables::function;
using Tables::instantiating;
using Tables::value;
using I = Identifier;

inline constexpr auto kFunction = AttrRow::Introspection::function;
inline constexpr auto kDomain = AttrRow::Introspection::independentDomainAttr;
inline constexpr Kex::KexAttrFlags kFunctionFlags{0x20001, 0x400};
inline constexpr Kex::KexAttrFlags kFixedFlags{0x220109, 0x40000400};
inline constexpr Kex::KexAttrFlags kValueFlags{0x220103, 0x400};
inline constexpr Kex::KexAttrFlags kBufFlags{0x8220103, 0x10000400};
inline constexpr Kex::KexAttrFlags kBareFlags{0x1, 0x400};

}  // namespace Detail

inline constexpr auto kIdentifierRows = [] {
  using namespace Detail;
  return std::to_array<AttrRow>({
      {.name = "clockInput",
       .id = 0x206,
       .access = value<&PowerSupplyDetector::IdentifierBase::clockInput>,
       .use = AttrRow::Use::dispatchedOnly},
      {.name = "notifier",
       .id = 0x207,
       .access =
           value<&Kex::Clock::NotifieeConst::notifier, &Kex::Clock::NotifieeConst::notifierIs>,
       .use = AttrRow::Use::dispatchedOnly},
      {.name = "doInitialize",
       .id = 0x11b,
       .access = function<&I::doInitialize>(),
       .introspection = kFunction,
       .flags = kFunctionFlags},
      {.name = "handlePollForInsertionRequest",
       .id = 0x11d,
       .access = function<&I::handlePollForInsertionRequest>(),
       .introspection = kFunction,
       .flags = kFunctionFlags},
      {.name = "handleIdentifySupplyRequest",
       .id = 0x11e,
       .access = function<&I::handleIdentifySupplyRequest>(),
       .introspection = kFunction,
       .flags = kFunctionFlags},
      {.name = "handleCheckSupplyRequest",
       .id = 0x11f,
       .access = function<&I::handleCheckSupplyRequest>(),
       .introspection = kFunction,
       .flags = kFunctionFlags},
      {.name = "doResetIdentifier",
       .id = 0x120,
       .access = function<&I::doResetIdentifier>(),
       .introspection = kFunction,
       .flags = kFunctionFlags},
      {.name = "deviceId",
       .id = 0x208,
       .access = value<&I::deviceId>,
       .introspection = kDomain,
       .flags = kFixedFlags},
      {.name = "fruInfoCommand",
       .id = 0x209,
       .access = value<&I::fruInfoCommand>,
       .introspection = kDomain,
       .flags = kFixedFlags},
      {.name = "vornAddr",
       .id = 0x20a,
       .access = value<&I::vornAddr, &I::vornAddrIs>,
       .introspection = kDomain,
       .flags = kValueFlags},
      {.name = "fruInfoAddr",
       .id = 0x20b,
       .access = value<&I::fruInfoAddr, &I::fruInfoAddrIs>,
       .flags = {0x220007, 0x400}},
      {.name = "maxBytesReadInProcessCall",
       .id = 0x20c,
       .access = value<&I::maxBytesReadInProcessCall>,
       .flags = {0x220001, 0x40000410}},
      {.name = "mfrIdAddr",
       .id = 0x20d,
       .access = value<&I::mfrIdAddr, &I::mfrIdAddrIs>,
       .introspection = kDomain,
       .flags = kValueFlags},
      {.name = "mfrId",
       .id = 0x20e,
       .access = value<&I::mfrId, &I::mfrIdIs>,
       .introspection = kDomain,
       .flags = kValueFlags},
      {.name = "mfrIdSupported",
       .id = 0x20f,
       .access = Tables::collection<MfrIdSupportedAccess, Kex::String8, bool>,
       .introspection = kDomain,
       .flags = {0x1a20103, 0x400}},
      {.name = "pollForInsertionWriteBuf",
       .id = 0x210,
       .access = instantiating<&I::pollForInsertionWriteBuf, &I::pollForInsertionWriteBufIs,
                               &I::pollForInsertionWriteBufDel>,
       .introspection = kDomain,
       .flags = kBufFlags},
      {.name = "identifySupplyWriteBuf",
       .id = 0x211,
       .access = instantiating<&I::identifySupplyWriteBuf, &I::identifySupplyWriteBufIs,
                               &I::identifySupplyWriteBufDel>,
       .introspection = kDomain,
       .flags = kBufFlags},
      {.name = "checkSupplyWriteBuf",
       .id = 0x212,
       .access = instantiating<&I::checkSupplyWriteBuf, &I::checkSupplyWriteBufIs,
                               &I::checkSupplyWriteBufDel>,
       .introspection = kDomain,
       .flags = kBufFlags},
      {.name = "pollForInsertionReadBuf",
       .id = 0x213,
       .access = instantiating<&I::pollForInsertionReadBuf, &I::pollForInsertionReadBufIs,
                               &I::pollForInsertionReadBufDel>,
       .introspection = kDomain,
       .flags = kBufFlags},
      {.name = "identifySupplyReadBuf",
       .id = 0x214,
       .access = instantiating<&I::identifySupplyReadBuf, &I::identifySupplyReadBufIs,
                               &I::identifySupplyReadBufDel>,
       .introspection = kDomain,
       .flags = kBufFlags},
      {.name = "checkSupplyReadBuf",
       .id = 0x215,
       .access = instantiating<&I::checkSupplyReadBuf, &I::checkSupplyReadBufIs,
                               &I::checkSupplyReadBufDel>,
       .introspection = kDomain,
       .flags = kBufFlags},
      {.name = "doSetupCheckSupplyRequest",
       .id = 0x216,
       .access = function<&I::doSetupCheckSupplyRequest>({"supported"}),
       .introspection = kFunction,
       .flags = kFunctionFlags},
      {.name = "derivedConstructed",
       .id = 0x217,
       .access = value<&I::derivedConstructed, &I::derivedConstructedIs>,
       .introspection = kDomain,
       .flags = kValueFlags},
      {.name = "handleConstructed",
       .id = 0x218,
       .access = function<&I::handleConstructed>(),
       .introspection = kFunction,
       .flags = kFunctionFlags},
      {.name = "hasNotificationActiveIs",
       .id = 0,
       .access = function<&I::hasNotificationActiveIs>({"hasNotificationActiveIs"}),
       .introspection = kFunction,
       .flags = kBareFlags,
       .use = AttrRow::Use::declaredOnly,
       .declaredType = &Kex::Builtin<bool>::_fwkType},
      {.name = "kexDoZombieReactors",
       .id = 0,
       .access = function<&I::kexDoZombieReactors>({"on"}),
       .introspection = kFunction,
       .flags = kBareFlags,
       .use = AttrRow::Use::declaredOnly},
  });
}();

}  // namespace Emerson::PmbusIdentifier
