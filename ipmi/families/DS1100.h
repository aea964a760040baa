// The 1100 W supplies, recognised by their product name.
#pragma once

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

inline constexpr char kDs1100FdlText[] =
    "FruFactoryIds: PowerSupply\n"
    "\n"
    "fru.api = '%s'\n"
    "fru.modelName = '%s'\n"
    "fru.mfgName = '%s'\n"
    "fru.serialNum = '%s'\n"
    "fru.capacity = 1100\n"
    "fru.deviceAddrOffset = 0x58\n"
    "\n"
    "ts1 = fru.newTempSensor( 1 )\n"
    "ts1.overheatThreshold = 100\n"
    "ts1.criticalThreshold = 105\n"
    "ts1.targetTemperature = 85\n"
    "ts1.description = 'Internal hot spot sensor'\n"
    "ts1.position = 'other'\n"
    "ts2 = fru.newTempSensor( 2 )\n"
    "ts2.overheatThreshold = 70\n"
    "ts2.criticalThreshold = 75\n"
    "ts2.targetTemperature = 55\n"
    "ts2.description = 'Internal ambient sensor'\n"
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
    "f1.physicalProperties = ( 'Emerson1100Fan%s', 20500, 0, 2, '%s' )\n"
    "f1.physicalProperties.alternateMaxRpm[ 0 ] = 20500\n"
    "f1.physicalProperties.alternateMaxRpm[ 1 ] = 23000\n"
    "coolingLevelToFanSpeed = {1: 45, 2: 60, 3: 75, 4: 90, 5: 100}\n"
    "for ( coolingLevel, fanSpeed ) in coolingLevelToFanSpeed.items():\n"
    "   f1.physicalProperties.coolingLevelToFanSpeed[ coolingLevel ] = fanSpeed\n";

/// `kDs1100FdlText`, built when the library is loaded.
extern Kex::String8 const ds1100FdlTemplate;

using Ds1100Filling =
    Filling<&Model::api, &Model::modelName, &Ipmi::ProductInfoArea::manufacturerName,
            &Ipmi::ProductInfoArea::serialNumber, &Model::fanSuffix, &Model::airflowText>;
static_assert(Ds1100Filling::fits(kDs1100FdlText));

inline constexpr Family kDs1100Family{.keyField = KeyField::productName,
                                      .rule = MatchRule::trimmedEquality,
                                      .fill = Ds1100Filling::fill<ds1100FdlTemplate>,
                                      .isComplete = Ds1100Filling::isComplete};

inline constexpr Model kDs1100Models[] = {
    {.id = ModelId::DS1100,
     .airflow = Airflow::frontToBack,
     .keyTrace = KeyTrace::key,
     .family = &kDs1100Family,
     .keys = {"DS1100PED-3", "DS1100PED-3-401"},
     .message = "Generating FDL for DS1100",
     .api = "DS1100",
     .modelName = "QLX-1100AC-F"},
    {.id = ModelId::DS1100_Reversed,
     .airflow = Airflow::backToFront,
     .keyTrace = KeyTrace::key,
     .family = &kDs1100Family,
     .keys = {"DS1100PED-3-402"},
     .message = "Generating FDL for DS1100_Reversed",
     .api = "DS1100",
     .modelName = "QLX-1100AC-R"},
    {.id = ModelId::DS1100DC,
     .airflow = Airflow::frontToBack,
     .keyTrace = KeyTrace::key,
     .family = &kDs1100Family,
     .keys = {"DS1100SDC-3-401"},
     .message = "Generating FDL for DS1100DC",
     .api = "DS1100",
     .modelName = "QLX-1100-DC-F"},
    {.id = ModelId::DS1100DC_Reversed,
     .airflow = Airflow::backToFront,
     .keyTrace = KeyTrace::key,
     .family = &kDs1100Family,
     .keys = {"DS1100SDC-3-402"},
     .message = "Generating FDL for DS1100DC_Reversed",
     .api = "DS1100",
     .modelName = "QLX-1100-DC-R"},
};

}  // namespace Emerson::IpmiIdentifier
