// The client's table of the linetest handlers: value kind and text size of each (included by
// ctl/value_kinds.h, after HandlerKind).  Port handlers take the port as nLocate[1] (--profile).
#pragma once

#include <span>

namespace tr104ctl {

inline constexpr HandlerKind kLinetestKindRows[] = {
    // Phone ports
    {"Tr104PhysicalInterfacePort", ValueKind::Text, 10},
    {"Tr104PhysicalInterfaceID", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceDialMode", ValueKind::Text, 8},
    {"Tr104PhysicalInterfaceTestDialToneDrawTime", ValueKind::Float, 0},
    {"Tr104PhysicalInterfaceTestDialToneBreakTime", ValueKind::Float, 0},
    {"Tr104PhysicalInterfaceReversePole", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceKcType", ValueKind::Text, 8},
    {"Tr104PhysicalInterfaceClipWhen", ValueKind::Text, 11},
    {"Tr104PhysicalInterfaceClipReversePole", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceMWIRingFlag", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceFlashUpTime", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceFlashDownTime", ValueKind::Integer, 0},
    // Line test: control
    {"Tr104PhysicalInterfaceTestSelector", ValueKind::Text, 32},
    {"Tr104PhysicalInterfaceTestState", ValueKind::Text, 32},
    {"Tr104PhysicalInterfaceIsTestOnBusy", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestIsDeviceBusy", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceAllTests", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestHazardousPotential", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestEnd", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceAllTestsEnd", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestConclusion", ValueKind::Text, 32},
    // Line test: thresholds
    {"Tr104PhysicalInterfaceTestVDCHazardousThreshold", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestVACHazardousThreshold", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestVDCForeignThreshold", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestVACForeignThreshold", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABGResistanceThreshold", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABResistanceThreshold", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestRingerEquivalenceMin", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestRingerEquivalenceMax", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestDBDT1", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestDBDT2", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestDBDT3", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestDBDT4", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceDialToneFrequency1", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceDialToneFrequency2", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceDialToneFrequency3", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestDialTonePowerThreshold", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestQuietChannelPowerThreshold", ValueKind::Integer, 0},
    // Line test: outer-line measurements
    {"Tr104PhysicalInterfaceTestAGDCVoltage", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestBGDCVoltage", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABDCVoltage", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestAGInsulationResistance", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestBGInsulationResistance", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABInsulationResistance", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABPolarityReversalResistance", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestAGCapacitance", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestBGCapacitance", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABCapacitance", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestAGACVoltage", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestBGACVoltage", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABACVoltage", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABLoopResistance", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestRingerEquivalence", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestAGACVoltage2", ValueKind::Text, 16},
    {"Tr104PhysicalInterfaceTestBGACVoltage2", ValueKind::Text, 16},
    {"Tr104PhysicalInterfaceTestABACVoltage2", ValueKind::Text, 16},
    {"Tr104PhysicalInterfaceTestAGDCVoltage2", ValueKind::Text, 16},
    {"Tr104PhysicalInterfaceTestBGDCVoltage2", ValueKind::Text, 16},
    {"Tr104PhysicalInterfaceTestABDCVoltage2", ValueKind::Text, 16},
    // Line test: inner-line measurements
    {"Tr104PhysicalInterfaceTestLoopCurrent", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestFeederVoltage", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestSignalToneVolume", ValueKind::Float, 0},
    {"Tr104PhysicalInterfaceTestSignalToneFrequency", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestRingingCurrentVoltage", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestQuietChannelPower", ValueKind::Float, 0},
    {"Tr104PhysicalInterfaceTestSignalToneState", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestFeederVoltageState", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestLoopCurrentState", ValueKind::Integer, 0},
    // Line test: flag words
    {"Tr104PhysicalInterfaceTestVACFlags", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestVDCFlags", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABGResistanceFlags", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestABResistanceFlags", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestRingerLoadFlags", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestDialTonePowerFlags", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestForeignEMF", ValueKind::Integer, 0},
    {"Tr104PhysicalInterfaceTestDcSignature", ValueKind::Integer, 0},
    // Simulated call
    {"Tr104SmultTestType", ValueKind::Text, 7},
    {"Tr104SmultCalledNum", ValueKind::Text, 32},
    {"Tr104SmultTimeout", ValueKind::Integer, 0},
    {"Tr104SmultStatus", ValueKind::Text, 13},
    {"Tr104SmultConclusion", ValueKind::Text, 8},
    {"Tr104SmultCallerFailReason", ValueKind::Text, 32},
    {"Tr104SmultCalledFailReason", ValueKind::Text, 32},
    {"Tr104SmultFailedRspCode", ValueKind::Integer, 0},
    {"Tr104SmultDialConfirmEnable", ValueKind::Integer, 0},
    {"Tr104SmultDialConfirmNum", ValueKind::Text, 2},
    {"Tr104SmultDialConfirmResult", ValueKind::Text, 8},
};

inline constexpr std::span<const HandlerKind> kLinetestKinds{kLinetestKindRows};

}  // namespace tr104ctl
