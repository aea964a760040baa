// The 750 W supplies, recognised by their product name.
#pragma once

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

inline constexpr char kDs750FdlText[] =
    "FruFactoryIds: PowerSupply\n"
    "\n"
    "fru.api = '%s'\n"
    "fru.modelName = '%s'\n"
    "fru.mfgName = '%s'\n"
    "fru.serialNum = '%s'\n"
    "fru.capacity = 750\n"
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
    "f1.physicalProperties = ( 'Emerson750Fan%s', 18000, 0, 2, '%s' )\n"
    "f1.physicalProperties.alternateMaxRpm[ 0 ] = 18000\n"
    "f1.physicalProperties.alternateMaxRpm[ 1 ] = 20500\n"
    "f1.physicalProperties.alternateMaxRpm[ 2 ] = 23000\n"
    "coolingLevelToFanSpeed = {1: 45, 2: 60, 3: 75, 4: 90, 5: 100}\n"
    "for ( coolingLevel, fanSpeed ) in coolingLevelToFanSpeed.items():\n"
    "   f1.physicalProperties.coolingLevelToFanSpeed[ coolingLevel ] = fanSpeed\n";

/// `kDs750FdlText`, built when the library is loaded.
extern Kex::String8 const ds750FdlTemplate;

using Ds750Filling =
    Filling<&Model::api, &Model::modelName, &Ipmi::ProductInfoArea::manufacturerName,
            &Ipmi::ProductInfoArea::serialNumber, &Model::fanSuffix, &Model::airflowText>;
static_assert(Ds750Filling::fits(kDs750FdlText));

inline constexpr Family kDs750Family{.keyField = KeyField::productName,
                                     .rule = MatchRule::trimmedEquality,
                                     .fill = Ds750Filling::fill<ds750FdlTemplate>,
                                     .isComplete = Ds750Filling::isComplete};

inline constexpr Model kDs750Models[] = {
    {.id = ModelId::DS750,
     .airflow = Airflow::frontToBack,
     .keyTrace = KeyTrace::key,
     .family = &kDs750Family,
     .keys = {"DS750PED-3", "DS750PED-3-401"},
     .message = "Generating FDL for DS750",
     .api = "DS750",
     .modelName = "QLX-750AC-F"},
    {.id = ModelId::DS750_Reversed,
     .airflow = Airflow::backToFront,
     .keyTrace = KeyTrace::key,
     .family = &kDs750Family,
     .keys = {"DS750PED-3-001", "DS750PED-3-402"},
     .message = "Generating FDL for DS750_Reversed",
     .api = "DS750",
     .modelName = "QLX-750AC-R"},
};

}  // namespace Emerson::IpmiIdentifier
