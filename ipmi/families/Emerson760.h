// The 760 W supply, recognised by the beginning of its product name.
#pragma once

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

inline constexpr char emerson760FdlTemplate[] =
    "FruFactoryIds: PowerSupply\n"
    "\n"
    "fru.api = 'PSMI-2.0'\n"
    "fru.mfgName = '%s'\n"
    "fru.modelName = 'QLX-760AC'\n"
    "fru.serialNum = '%s'\n"
    "fru.capacity = 760\n"
    "fru.idPromAddrOffset = 0x50\n"
    "fru.deviceAddrOffset = 0x58\n"
    "\n"
    "ts1 = fru.newTempSensor( 1 )\n"
    "ts1.overheatThreshold = 90\n"
    "ts1.criticalThreshold = 110\n"
    "ts1.description = 'Power supply sensor'\n"
    "ts1.position = 'other'\n"
    "\n"
    "fru.inputVoltageSensor = ( '1', 'Input voltage sensor' )\n"
    "fru.inputCurrentSensor = ( '1', 'Input current sensor' )\n"
    "ovs = fru.newOutputVoltageSensor(\n"
    "         '1', 'Output voltage sensor' )\n"
    "ovs.expectedVoltage = 12\n"
    "fru.newOutputCurrentSensor( '1', 'Output current sensor' )\n"
    "\n"
    "f1 = fru.newFan( 1 )\n"
    "f1.managed = False\n"
    "f1.physicalProperties = ( 'Emerson760Fan', 16000, 0, 0, 'frontToBackAirflow' )\n";

using Emerson760Filling =
    Filling<&Ipmi::ProductInfoArea::manufacturerName, &Ipmi::ProductInfoArea::serialNumber>;
static_assert(Emerson760Filling::fits(emerson760FdlTemplate));

inline constexpr Family kEmerson760Family{.keyField = KeyField::productName,
                                          .rule = MatchRule::prefix,
                                          .fill = Emerson760Filling::fill<emerson760FdlTemplate>,
                                          .isComplete = Emerson760Filling::isComplete};

inline constexpr Model kEmerson760Models[] = {
    {.id = ModelId::Emerson760,
     .family = &kEmerson760Family,
     .keys = {"DS760SL-3"},
     .message = "Generating Fdl for Emerson 760"},
};

}  // namespace Emerson::IpmiIdentifier
