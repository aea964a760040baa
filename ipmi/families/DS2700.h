// The 2700 W supplies, recognised by their part number.
#pragma once

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

inline constexpr char kDs2700FdlText[] =
    "FruFactoryIds: PowerSupply\n"
    "\n"
    "fru.api = 'Emerson2700'\n"
    "fru.mfgName = '%s'\n"
    "fru.modelName = '%s'\n"
    "fru.hardwareRev = '%s'\n"
    "fru.serialNum = '%s'\n"
    "fru.capacity = 2700\n"
    "fru.idPromAddrOffset = 0x50\n"
    "fru.deviceAddrOffset = 0x58\n"
    "\n"
    "ts1 = fru.newTempSensor( 1 )\n"
    "ts1.overheatThreshold = 85\n"
    "ts1.criticalThreshold = 90\n"
    "ts1.targetTemperature = 75\n"
    "ts1.description = 'Secondary sync FET'\n"
    "ts1.position = 'other'\n"
    "\n"
    "ts2 = fru.newTempSensor( 2 )\n"
    "ts2.overheatThreshold = %d\n"
    "ts2.criticalThreshold = %d\n"
    "ts2.targetTemperature = %d\n"
    "ts2.description = 'Secondary control board'\n"
    "ts2.position = 'other'\n"
    "\n"
    "fru.inputVoltageSensor = ( '1', 'Input voltage sensor' )\n"
    "fru.inputCurrentSensor = ( '1', 'Input current sensor' )\n"
    "ovs = fru.newOutputVoltageSensor( '1', 'Output voltage sensor' )\n"
    "ovs.expectedVoltage = 12\n"
    "fru.newOutputCurrentSensor( '1', 'Output current sensor' )\n"
    "\n"
    "f1 = fru.newFan( 1 )\n"
    "f1.managed = True\n"
    "f1.offOnPowerLoss = True\n"
    "f1.physicalProperties = ( 'Emerson2700Fan%s', 16500, 0, 0, '%s' )\n"
    "coolingLevelToFanSpeed = { 1 : 40, 2 : 50, 3 : 60, \n"
    "                           4 : 70, 5 : 76, 6 : 82, \n"
    "                           7 : 88, 8 : 94, 9 : 100 }\n"
    "for ( coolingLevel, fanSpeed ) in coolingLevelToFanSpeed.items():\n"
    "   f1.physicalProperties.coolingLevelToFanSpeed[ coolingLevel ] = fanSpeed\n";

/// `kDs2700FdlText`, built when the library is loaded.
extern Kex::String8 const ds2700FdlTemplate;

using Ds2700Filling =
    Filling<&Ipmi::ProductInfoArea::manufacturerName, &Model::modelName,
            &Ipmi::ProductInfoArea::productVersion, &Ipmi::ProductInfoArea::serialNumber,
            &Model::sensor2Overheat, &Model::sensor2Critical, &Model::sensor2Target,
            &Model::fanSuffix, &Model::airflowText>;
static_assert(Ds2700Filling::fits(kDs2700FdlText));

inline constexpr Family kDs2700Family{.keyField = KeyField::partNumber,
                                      .rule = MatchRule::trimmedEquality,
                                      .fill = Ds2700Filling::fill<ds2700FdlTemplate>,
                                      .isComplete = Ds2700Filling::isComplete};

inline constexpr Model kDs2700Models[] = {
    {.id = ModelId::DS2700,
     .airflow = Airflow::frontToBack,
     .family = &kDs2700Family,
     .keys = {"DS2700PE-3-001"},
     .modelName = "QLX-2700-AC-F",
     .sensor2Overheat = 45,
     .sensor2Critical = 50,
     .sensor2Target = 40},
    {.id = ModelId::DS2700_Reversed,
     .airflow = Airflow::backToFront,
     .family = &kDs2700Family,
     .keys = {"DS2700PE-3"},
     .modelName = "QLX-2700-AC-R",
     .sensor2Overheat = 45,
     .sensor2Critical = 50,
     .sensor2Target = 40},
    {.id = ModelId::DS2700DC,
     .airflow = Airflow::frontToBack,
     .family = &kDs2700Family,
     .keys = {"DS2700DC-3-001", "DS2700DC-3-402"},
     .modelName = "QLX-2700-DC-F",
     .sensor2Overheat = 60,
     .sensor2Critical = 65,
     .sensor2Target = 55},
    {.id = ModelId::DS2700DC_Reversed,
     .airflow = Airflow::backToFront,
     .family = &kDs2700Family,
     .keys = {"DS2700DC-3", "DS2700DC-3-401"},
     .modelName = "QLX-2700-DC-R",
     .sensor2Overheat = 66,
     .sensor2Critical = 71,
     .sensor2Target = 60},
};

}  // namespace Emerson::IpmiIdentifier
