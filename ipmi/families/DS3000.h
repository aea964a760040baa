// The 3000 W supplies, recognised by their part number.
#pragma once

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

inline constexpr char kDs3000FdlText[] =
    "FruFactoryIds: PowerSupply\n"
    "\n"
    "fru.api = 'Emerson3000'\n"
    "fru.mfgName = '%s'\n"
    "fru.modelName = '%s'\n"
    "fru.hardwareRev = '%s'\n"
    "fru.serialNum = '%s'\n"
    "fru.capacity = 3000\n"
    "fru.idPromAddrOffset = 0x50\n"
    "fru.deviceAddrOffset = 0x58\n"
    "\n"
    "ts1 = fru.newTempSensor( 1 )\n"
    "ts1.overheatThreshold = 75\n"
    "ts1.criticalThreshold = 80\n"
    "ts1.targetTemperature = 65\n"
    "ts1.description = 'Primary heatsink sensor'\n"
    "ts1.position = 'other'\n"
    "\n"
    "ts2 = fru.newTempSensor( 2 )\n"
    "ts2.overheatThreshold = 60\n"
    "ts2.criticalThreshold = 65\n"
    "ts2.targetTemperature = 55\n"
    "ts2.description = 'Fan air temperature sensor'\n"
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
    "f1.offOnPowerLoss = %s\n"
    "f1.physicalProperties = ( 'Emerson3000Fan%s', %d, 0, 0, '%s' )\n"
    "coolingLevelToFanSpeed = { 1 : 40, 2 : 50, 3 : 60, \n"
    "                           4 : 70, 5 : 76, 6 : 82, \n"
    "                           7 : 88, 8 : 94, 9 : 100 }\n"
    "for ( coolingLevel, fanSpeed ) in coolingLevelToFanSpeed.items():\n"
    "   f1.physicalProperties.coolingLevelToFanSpeed[ coolingLevel ] = fanSpeed\n";

/// `kDs3000FdlText`, built when the library is loaded.
extern Kex::String8 const ds3000FdlTemplate;

using Ds3000Filling =
    Filling<&Ipmi::ProductInfoArea::manufacturerName, &Model::modelName,
            &Ipmi::ProductInfoArea::productVersion, &Ipmi::ProductInfoArea::serialNumber,
            &Model::offOnPowerLoss, &Model::fanSuffix, &Model::fanSpeed, &Model::airflowText>;
static_assert(Ds3000Filling::fits(kDs3000FdlText));

inline constexpr Family kDs3000Family{.keyField = KeyField::partNumber,
                                      .rule = MatchRule::trimmedEquality,
                                      .fill = Ds3000Filling::fill<ds3000FdlTemplate>,
                                      .isComplete = Ds3000Filling::isComplete};

inline constexpr Model kDs3000Models[] = {
    {.id = ModelId::DS3000,
     .airflow = Airflow::frontToBack,
     .family = &kDs3000Family,
     .keys = {"DS3000PE-3-001", "DS3000PE-3-402"},
     .modelName = "QLX-3K-AC-F",
     .offOnPowerLoss = "True",
     .fanSpeed = 12500},
    {.id = ModelId::DS3000_Reversed,
     .airflow = Airflow::backToFront,
     .family = &kDs3000Family,
     .keys = {"DS3000PE-3", "DS3000PE-3-401"},
     .modelName = "QLX-3K-AC-R",
     .offOnPowerLoss = "True",
     .fanSpeed = 12500},
    {.id = ModelId::DS3000TE,
     .airflow = Airflow::frontToBack,
     .family = &kDs3000Family,
     .keys = {"DS3000TE-3-001", "DS3000TE-3-402"},
     .modelName = "QLX-3KT-AC-F",
     .offOnPowerLoss = "False",
     .fanSpeed = 16500},
    {.id = ModelId::DS3000TE_Reversed,
     .airflow = Airflow::backToFront,
     .family = &kDs3000Family,
     .keys = {"DS3000TE-3", "DS3000TE-3-401"},
     .modelName = "QLX-3KT-AC-R",
     .offOnPowerLoss = "False",
     .fanSpeed = 16500},
    {.id = ModelId::DS3000DC,
     .airflow = Airflow::frontToBack,
     .family = &kDs3000Family,
     .keys = {"DS3000DC-3-001", "DS3000DC-3-402"},
     .modelName = "QLX-3K-DC-F",
     .offOnPowerLoss = "False",
     .fanSpeed = 16500},
    {.id = ModelId::DS3000DC_Reversed,
     .airflow = Airflow::backToFront,
     .family = &kDs3000Family,
     .keys = {"DS3000DC-3", "DS3000DC-3-401"},
     .modelName = "QLX-3K-DC-R",
     .offOnPowerLoss = "False",
     .fanSpeed = 16500},
};

}  // namespace Emerson::IpmiIdentifier
