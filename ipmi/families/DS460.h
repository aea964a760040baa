// The 460 W supplies, recognised by their product name, blanks at its end included.
#pragma once

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

inline constexpr char kDs460FdlText[] =
    "FruFactoryIds: PowerSupply\n"
    "\n"
    "fru.api = '%s'\n"
    "fru.modelName = '%s'\n"
    "fru.mfgName = '%s'\n"
    "fru.serialNum = '%s'\n"
    "fru.capacity = 460\n"
    "fru.idPromAddrOffset = 0x50\n"
    "fru.deviceAddrOffset = 0x58\n"
    "\n"
    "ts1 = fru.newTempSensor( 1 )\n"
    "ts1.overheatThreshold = 60\n"
    "ts1.criticalThreshold = 70\n"
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
    "f1.managed = True\n"
    "f1.physicalProperties = ( 'Emerson460Fan', 18000, 4500, 2, '%s' )\n"
    "coolingLevelToFanSpeed = {1: 45, 2: 60, 3: 75, 4: 90, 5: 100}\n"
    "for ( coolingLevel, fanSpeed ) in coolingLevelToFanSpeed.items():\n"
    "   f1.physicalProperties.coolingLevelToFanSpeed[ coolingLevel ] = fanSpeed\n";

/// `kDs460FdlText`, built when the library is loaded.
extern Kex::String8 const ds460FdlTemplate;

using Ds460Filling =
    Filling<&Model::api, &Model::modelName, &Ipmi::ProductInfoArea::manufacturerName,
            &Ipmi::ProductInfoArea::serialNumber, &Model::airflowText>;
static_assert(Ds460Filling::fits(kDs460FdlText));

inline constexpr Family kDs460Family{.keyField = KeyField::productName,
                                     .rule = MatchRule::exactLength,
                                     .keyLengths = {12, 14},
                                     .fill = Ds460Filling::fill<ds460FdlTemplate>,
                                     .isComplete = Ds460Filling::isComplete};

inline constexpr Model kDs460Models[] = {
    {.id = ModelId::DS460TwoMicrocontroller,
     .airflow = Airflow::frontToBack,
     .keyTrace = KeyTrace::keyAndLength,
     .family = &kDs460Family,
     .keys = {"DS460S-3    "},
     .message = "Generating FDL for DS460TwoMicrocontroller ",
     .api = "DS460-ExtraDelays",
     .modelName = "QLX-460AC-F"},
    {.id = ModelId::DS460TwoMicrocontroller_Reversed,
     .airflow = Airflow::backToFront,
     .family = &kDs460Family,
     .keys = {"DS460S-3-001"},
     .message = "Generating FDL for DS460TwoMicrocontroller_Reversed",
     .api = "DS460-ExtraDelays",
     .modelName = "QLX-460AC-R"},
    {.id = ModelId::DS460ThreeMicrocontroller,
     .airflow = Airflow::frontToBack,
     .keyTrace = KeyTrace::keyAndLength,
     .family = &kDs460Family,
     .keys = {"DS460S-3-002"},
     .message = "Generating FDL for DS460ThreeMicrocontroller ",
     .api = "DS460-ExtraDelays",
     .modelName = "QLX-460AC-F"},
    {.id = ModelId::DS460ThreeMicrocontroller_Reversed,
     .airflow = Airflow::backToFront,
     .family = &kDs460Family,
     .keys = {"DS460S-3-003"},
     .message = "Generating FDL for DS460ThreeMicrocontroller_Reversed",
     .api = "DS460-ExtraDelays",
     .modelName = "QLX-460AC-R"},
    {.id = ModelId::DS460DC,
     .airflow = Airflow::frontToBack,
     .keyTrace = KeyTrace::keyAndLength,
     .family = &kDs460Family,
     .keys = {"DS460SDC-3  "},
     .message = "Generating FDL for DS460DC",
     .api = "DS460DC",
     .modelName = "QLX-460DC-F"},
    {.id = ModelId::DS460DC_Reversed,
     .airflow = Airflow::backToFront,
     .keyTrace = KeyTrace::keyAndLength,
     .family = &kDs460Family,
     .keys = {"DS460SDC-3-001"},
     .message = "Generating FDL for DS460DC_Reversed",
     .api = "DS460DC",
     .modelName = "QLX-460DC-R"},
};

}  // namespace Emerson::IpmiIdentifier
