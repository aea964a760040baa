// The 1600 W supplies, recognised by their product name.
#pragma once

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

inline constexpr char kDs1600FdlText[] =
    "FruFactoryIds: PowerSupply\n"
    "\n"
    "fru.api = '%s'\n"
    "fru.modelName = '%s'\n"
    "fru.mfgName = '%s'\n"
    "fru.serialNum = '%s'\n"
    "fru.capacity = 1600\n"
    "fru.deviceAddrOffset = 0x58\n"
    "\n"
    "ts1 = fru.newTempSensor( 1 )\n"
    "ts1.overheatThreshold = 65\n"
    "ts1.criticalThreshold = 70\n"
    "ts1.targetTemperature = 55\n"
    "ts1.description = 'Power supply sensor'\n"
    "ts1.position = 'other'\n"
    "\n"
    "fru.inputVoltageSensor = ( '1', 'Input voltage sensor' )\n"
    "fru.inputCurrentSensor = ( '1', 'Input current sensor' )\n"
    "ovs = fru.newOutputVoltageSensor( '1', 'Output voltage sensor' )\n"
    "ovs.expectedVoltage = 12\n"
    "fru.newOutputCurrentSensor( '1', 'Output current sensor' )\n"
    "\n"
    "f1 = fru.newFan( 1 )\n"
    "f1.managed = True\n"
    "f1.physicalProperties = ( 'Emerson1600Fan%s', 23000, 0, 2, '%s' )\n"
    "coolingLevelToFanSpeed = {1: 45, 2: 60, 3: 75, 4: 90, 5: 100}\n"
    "for ( coolingLevel, fanSpeed ) in coolingLevelToFanSpeed.items():\n"
    "   f1.physicalProperties.coolingLevelToFanSpeed[ coolingLevel ] = fanSpeed\n";

/// `kDs1600FdlText`, built when the library is loaded.
extern Kex::String8 const ds1600FdlTemplate;

using Ds1600Filling =
    Filling<&Model::api, &Model::modelName, &Ipmi::ProductInfoArea::manufacturerName,
            &Ipmi::ProductInfoArea::serialNumber, &Model::fanSuffix, &Model::airflowText>;
static_assert(Ds1600Filling::fits(kDs1600FdlText));

inline constexpr Family kDs1600Family{.keyField = KeyField::productName,
                                      .rule = MatchRule::trimmedEquality,
                                      .fill = Ds1600Filling::fill<ds1600FdlTemplate>,
                                      .isComplete = Ds1600Filling::isComplete};

inline constexpr Model kDs1600Models[] = {
    {.id = ModelId::DS1600,
     .airflow = Airflow::frontToBack,
     .keyTrace = KeyTrace::key,
     .family = &kDs1600Family,
     .keys = {"DS1600SPE-3-403"},
     .message = "Generating FDL for DS1600",
     .api = "DS1600",
     .modelName = "QLX-1600AC-F"},
    {.id = ModelId::DS1600_Reversed,
     .airflow = Airflow::backToFront,
     .keyTrace = KeyTrace::key,
     .family = &kDs1600Family,
     .keys = {"DS1600SPE-3-402"},
     .message = "Generating FDL for DS1600_Reversed",
     .api = "DS1600",
     .modelName = "QLX-1600AC-R"},
};

}  // namespace Emerson::IpmiIdentifier
