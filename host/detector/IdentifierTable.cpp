// The tables of the identifier base and of its framework bases.
#include "host/detector/IdentifierBase.h"
#include "host/tables/Access.h"
#include "host/tables/TypeTable.h"

namespace PowerSupplyDetector {

namespace {

using Base = IdentifierBase;
using Tables::AttrRow;
using Tables::value;

constexpr Kex::KexAttrFlags kReadOnly{0x220001, 0x400};
constexpr Kex::KexAttrFlags kWritable{0x220103, 0x400};
constexpr Kex::KexAttrFlags kFunction{0x20001, 0x400};
constexpr auto kIsFunction = AttrRow::Introspection::function;

constexpr AttrRow kRows[] = {
    {.name = "config", .id = 0x101, .access = value<&Base::config>, .flags = kReadOnly},
    {.name = "status", .id = 0x102, .access = value<&Base::status>, .flags = kReadOnly},
    {.name = "identifierName",
     .id = 0x103,
     .access = value<&Base::identifierName>,
     .flags = kReadOnly},
    {.name = "state", .id = 0x104, .access = value<&Base::stateNumber>, .flags = kReadOnly},
    {.name = "pollInterval",
     .id = 0x105,
     .access = value<&Base::pollInterval, &Base::pollIntervalIs>,
     .flags = kWritable},
    {.name = "pollDelay",
     .id = 0x106,
     .access = value<&Base::pollDelay, &Base::pollDelayIs>,
     .flags = kWritable},
    {.name = "reviewInterval",
     .id = 0x113,
     .access = value<&Base::reviewInterval, &Base::reviewIntervalIs>,
     .flags = kWritable},
    {.name = "serialNum", .id = 0x107, .access = value<&Base::serialNum>, .flags = kReadOnly},
    {.name = "fdl", .id = 0x108, .access = value<&Base::fdl>, .flags = kReadOnly},
    {.name = "hwError", .id = 0x109, .access = value<&Base::hwError>, .flags = kReadOnly},
    {.name = "initialized", .id = 0x10a, .access = value<&Base::initialized>, .flags = kReadOnly},
    {.name = "constructed", .id = 0x10b, .access = value<&Base::constructed>, .flags = kReadOnly},
    {.name = "failCount", .id = 0x10c, .access = value<&Base::failCount>, .flags = kReadOnly},
    {.name = "pollForInsertionRequest",
     .id = 0x10d,
     .access = value<&Base::pollForInsertionRequest>,
     .flags = kReadOnly},
    {.name = "identifySupplyRequest",
     .id = 0x10e,
     .access = value<&Base::identifySupplyRequest>,
     .flags = kReadOnly},
    {.name = "checkSupplyRequest",
     .id = 0x10f,
     .access = value<&Base::checkSupplyRequest>,
     .flags = kReadOnly},
    {.name = "presentIntCtrl",
     .id = 0x110,
     .access = value<&Base::presentIntCtrl>,
     .flags = kReadOnly},
    {.name = "presentIntFd", .id = 0x111, .access = value<&Base::presentIntFd>, .flags = kReadOnly},
    {.name = "presentGpo", .id = 0x112, .access = value<&Base::presentGpo>, .flags = kReadOnly},
    {.name = "doInitialize",
     .id = 0x11b,
     .access = Tables::function<&Base::doInitialize>(),
     .introspection = kIsFunction,
     .flags = kFunction},
    {.name = "handlePollForInsertionRequest",
     .id = 0x11d,
     .access = Tables::function<&Base::handlePollForInsertionRequest>(),
     .introspection = kIsFunction,
     .flags = kFunction},
    {.name = "handleIdentifySupplyRequest",
     .id = 0x11e,
     .access = Tables::function<&Base::handleIdentifySupplyRequest>(),
     .introspection = kIsFunction,
     .flags = kFunction},
    {.name = "handleCheckSupplyRequest",
     .id = 0x11f,
     .access = Tables::function<&Base::handleCheckSupplyRequest>(),
     .introspection = kIsFunction,
     .flags = kFunction},
    {.name = "doResetIdentifier",
     .id = 0x120,
     .access = Tables::function<&Base::doResetIdentifier>(),
     .introspection = kIsFunction,
     .flags = kFunction},
};

constexpr Tables::TypeTable kTable{
    .shortName = "IdentifierBase",
    .fullName = "PowerSupplyDetector::IdentifierBase",
    .base = &Kex::Entity::NotifieeConst::_fwkType,
    .size = sizeof(Base),
    .isEntity = false,
    .constructorArguments = {},
    .rows = kRows,
};

}  // namespace

Kex::KexType& IdentifierBase::_fwkType() {
  static Kex::KexType& record = Tables::newTableHostType(kTable);
  return record;
}

Kex::KexType& IdentifierBase::fwkType() const { return _fwkType(); }

}  // namespace PowerSupplyDetector
