// The emulated voice module's phone ports, line tests and simulated calls, as tests and tools
// drive them.
//
// A started line test reports "testing" (progress 2) for the test duration (2 s unless set),
// then "finished" (progress 3) with result byte 0, or 1 when the port is set to "not
// supported"; its measurements, state bytes and conclusion are the port's configured values.
// A simulated call walks through its status codes, one step per step time (500 ms unless set),
// to its configured end: success, or failure with a fail code; a call still under way when its
// timeout (seconds) runs out ends as not answered.  Dial-confirm settings are kept
// per port.  Each emulator has its own state; all ports start with realistic healthy values.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "emulator/voice_module_emulator.h"

namespace vmemu::linetest {

inline constexpr std::chrono::milliseconds kDefaultTestDuration{2000};
inline constexpr std::chrono::milliseconds kDefaultCallStep{500};

// ---- Line tests ----
void setTestDuration(VoiceModuleEmulator &emulator, std::chrono::milliseconds duration);
// A measurement by its record field name ("aGroundACVoltage", "loopCurrent", ...): false for an
// unknown name.  The text is kept as given, cut at 16 bytes.
bool setMeasurement(VoiceModuleEmulator &emulator, int port, const std::string &field, const std::string &text);
std::vector<std::string> measurementNames();
// The conclusion byte: 0 for "Normal", the characters '1'..'8' for the faults.
void setConclusion(VoiceModuleEmulator &emulator, int port, uint8_t code);
// Inner-line state bytes: signal tone and feeder voltage (0 passed).
void setStateBytes(VoiceModuleEmulator &emulator, int port, uint8_t signalTone, uint8_t feederVoltage);
void setNotSupported(VoiceModuleEmulator &emulator, int port, bool notSupported);
// Type code of the port's last started line test (0 none) and the number of tests started.
uint8_t lastTestType(VoiceModuleEmulator &emulator, int port);
int testsStarted(VoiceModuleEmulator &emulator, int port);

// ---- Simulated calls ----
void setCallStep(VoiceModuleEmulator &emulator, std::chrono::milliseconds step);
// How the port's next simulated calls end: failCode 0 for success, else the caller or called
// fail code the voice module reports.
void setCallEnd(VoiceModuleEmulator &emulator, int port, uint32_t failCode);
// Result of the dial confirmation the port reports (1 success).
void setDialConfirmResult(VoiceModuleEmulator &emulator, int port, uint32_t result);

// One readable line per port of each kind (the console's "show" commands).
std::string describeLineTest(VoiceModuleEmulator &emulator, int port);
std::string describeCall(VoiceModuleEmulator &emulator, int port);

}  // namespace vmemu::linetest
