// The 2900 W supply, recognised by the beginning of its part number.
#pragma once

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

inline constexpr char ds2900FdlTemplate[] =
    "FruFactoryIds: PowerSupply\n"
    "\n"
    "fru.api = 'Astec2900'\n"
    "fru.mfgName = '%s'\n"
    "fru.modelName = 'QLX-2900AC'\n"
    "fru.hardwareRev = '%s'\n"
    "fru.serialNum = '%s'\n"
    "fru.capacity = 2900\n"
    "fru.idPromAddrOffset = 0x50\n"
    "fru.deviceAddrOffset = 0x38\n"
    "\n"
    "ts1 = fru.newTempSensor( 1 )\n"
    "ts1.overheatThreshold = 65\n"
    "ts1.criticalThreshold = 70\n"
    "ts1.description = 'Power supply sensor'\n"
    "ts1.position = 'other'\n"
    "\n"
    "ts2 = fru.newTempSensor( 2 )\n"
    "ts2.overheatThreshold = 65\n"
    "ts2.criticalThreshold = 70\n"
    "ts2.description = 'Power supply sensor'\n"
    "ts2.position = 'other'\n"
    "\n"
    "fru.inputVoltageSensor = ( '1', 'Input voltage sensor' )\n"
    "fru.inputCurrentSensor = ( '1', 'Input current sensor' )\n"
    "ovs = fru.newOutputVoltageSensor(\n"
    "         '1', 'Output voltage sensor' )\n"
    "ovs.expectedVoltage = 12\n"
    "fru.newOutputCurrentSensor( '1', 'Output current sensor' )\n"
    "\n"
    "f1 = fru.newFan( 1 )\n"
    "f1.managed = True\n"
    "f1.physicalProperties = ( 'Astec2900Fan', 12208, 0, 0, 'frontToBackAirflow' )\n"
    "coolingLevelToFanSpeed = { 1 : 40, 2 : 50, 3 : 60, \n"
    "                           4 : 70, 5 : 76, 6 : 82, \n"
    "                           7 : 88, 8 : 94, 9 : 100 }\n"
    "for ( coolingLevel, fanSpeed ) in coolingLevelToFanSpeed.items():\n"
    "   f1.physicalProperties.coolingLevelToFanSpeed[ coolingLevel ] = fanSpeed\n";

using Ds2900Filling =
    Filling<&Ipmi::ProductInfoArea::manufacturerName, &Ipmi::ProductInfoArea::productVersion,
            &Ipmi::ProductInfoArea::serialNumber>;
static_assert(Ds2900Filling::fits(ds2900FdlTemplate));

inline constexpr Family kDs2900Family{.keyField = KeyField::partNumber,
                                      .rule = MatchRule::prefix,
                                      .fill = Ds2900Filling::fill<ds2900FdlTemplate>,
                                      .isComplete = Ds2900Filling::isComplete};

inline constexpr Model kDs2900Models[] = {
    {.id = ModelId::DS2900, .family = &kDs2900Family, .keys = {"DS2900-3"}},
};

}  // namespace Emerson::IpmiIdentifier
