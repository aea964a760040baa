// The 500 W supplies, recognised by their product name.
#pragma once

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

// The third sensor of the AC models.
inline constexpr char ds500ExtraSensorBlock[] =
    "ts3 = fru.newTempSensor( 3 )\n"
    "ts3.overheatThreshold = 75\n"
    "ts3.criticalThreshold = 80\n"
    "ts3.targetTemperature = 55\n"
    "ts3.description = 'Secondary ambient sensor'\n"
    "ts3.position = 'other'\n"
    "\n";

inline constexpr char kDs500FdlText[] =
    "FruFactoryIds: PowerSupply\n"
    "\n"
    "fru.api = '%s'\n"
    "fru.modelName = '%s'\n"
    "fru.mfgName = '%s'\n"
    "fru.serialNum = '%s'\n"
    "fru.capacity = 500\n"
    "fru.deviceAddrOffset = 0x58\n"
    "\n"
    "ts1 = fru.newTempSensor( 1 )\n"
    "ts1.position = 'other'\n"
    "\n"
    "fru.inputVoltageSensor = ( '1', 'Input voltage sensor' )\n"
    "fru.inputCurrentSensor = ( '1', 'Input current sensor' )\n"
    "ovs = fru.newOutputVoltageSensor( '1', 'Output voltage sensor' )\n"
    "ovs.expectedVoltage = 12\n"
    "fru.newOutputCurrentSensor( '1', 'Output current sensor' )\n"
    "\n"
    "ts1 = fru.newTempSensor( 1 )\n"
    "ts1.overheatThreshold = %d\n"
    "ts1.criticalThreshold = %d\n"
    "ts1.description = 'Primary hot spot sensor'\n"
    "ts1.position = 'other'\n"
    "\n"
    "ts2 = fru.newTempSensor( 2 )\n"
    "ts2.overheatThreshold = %d\n"
    "ts2.criticalThreshold = %d\n"
    "ts2.description = 'Secondary hot spot sensor'\n"
    "ts2.position = 'other'\n"
    "\n"
    "%sf1 = fru.newFan( 1 )\n"
    "f1.managed = True\n"
    "f1.physicalProperties = ( 'Emerson500Fan%s', 21000, 0, 2, '%s' )\n"
    "f1.physicalProperties.alternateMaxRpm[ 0 ] = 21000\n"
    "f1.physicalProperties.alternateMaxRpm[ 1 ] = 22000\n"
    "f1.physicalProperties.alternateMaxRpm[ 2 ] = 23000\n"
    "coolingLevelToFanSpeed = {1: 45, 2: 60, 3: 75, 4: 90, 5: 100}\n"
    "for ( coolingLevel, fanSpeed ) in coolingLevelToFanSpeed.items():\n"
    "   f1.physicalProperties.coolingLevelToFanSpeed[ coolingLevel ] = fanSpeed\n";

/// `kDs500FdlText`, built when the library is loaded.
extern Kex::String8 const ds500FdlTemplate;

using Ds500Filling =
    Filling<&Model::api, &Model::modelName, &Ipmi::ProductInfoArea::manufacturerName,
            &Ipmi::ProductInfoArea::serialNumber, &Model::sensor1Overheat, &Model::sensor1Critical,
            &Model::sensor2Overheat, &Model::sensor2Critical,
            MayBeEmpty<&Model::extraSensorBlock>{}, &Model::fanSuffix, &Model::airflowText>;
static_assert(Ds500Filling::fits(kDs500FdlText));

inline constexpr Family kDs500Family{.keyField = KeyField::productName,
                                     .rule = MatchRule::trimmedEquality,
                                     .fill = Ds500Filling::fill<ds500FdlTemplate>,
                                     .isComplete = Ds500Filling::isComplete};

inline constexpr Model kDs500Models[] = {
    {.id = ModelId::DS500,
     .airflow = Airflow::frontToBack,
     .keyTrace = KeyTrace::key,
     .family = &kDs500Family,
     .keys = {"DS500SPE-3-401"},
     .message = "Generating FDL for DS500",
     .api = "DS500",
     .modelName = "QLX-500AC-F",
     .extraSensorBlock = ds500ExtraSensorBlock,
     .sensor1Overheat = 100,
     .sensor1Critical = 105,
     .sensor2Overheat = 100,
     .sensor2Critical = 110},
    {.id = ModelId::DS500_Reversed,
     .airflow = Airflow::backToFront,
     .keyTrace = KeyTrace::key,
     .family = &kDs500Family,
     .keys = {"DS500SPE-3-402"},
     .message = "Generating FDL for DS500_Reversed",
     .api = "DS500",
     .modelName = "QLX-500AC-R",
     .extraSensorBlock = ds500ExtraSensorBlock,
     .sensor1Overheat = 85,
     .sensor1Critical = 90,
     .sensor2Overheat = 100,
     .sensor2Critical = 110},
    {.id = ModelId::DS500DC,
     .airflow = Airflow::frontToBack,
     .keyTrace = KeyTrace::key,
     .family = &kDs500Family,
     .keys = {"DS500SDC-3-401"},
     .message = "Generating FDL for DS500DC",
     .api = "DS500",
     .modelName = "QLX-500-DC-F",
     .sensor1Overheat = 100,
     .sensor1Critical = 105,
     .sensor2Overheat = 100,
     .sensor2Critical = 110},
    {.id = ModelId::DS500DC_Reversed,
     .airflow = Airflow::backToFront,
     .keyTrace = KeyTrace::key,
     .family = &kDs500Family,
     .keys = {"DS500SDC-3-402"},
     .message = "Generating FDL for DS500DC_Reversed",
     .api = "DS500",
     .modelName = "QLX-500-DC-R",
     .sensor1Overheat = 85,
     .sensor1Critical = 90,
     .sensor2Overheat = 100,
     .sensor2Critical = 110},
};

}  // namespace Emerson::IpmiIdentifier
