// The device-level state of the emulated voice module: the voice activity LED, the private
// management protocol switches, the profile counts, the signalling protocol configured for the
// next start, and the codec selection each line's voice profile holds.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "emulator/voice_module_emulator.h"

namespace vmemu {

struct DeviceState {
    int led = 1;  // command 20: 0 off, 1 on, 2 blinking (voice activity)
    int privateProtocol = 0;  // commands 6 / 5
    int ignoreClearConfig = 0;  // commands 8 / 7
    int profileCount = 1;  // command 94
    int maxLinesPerProfile = 2;  // command 95
    std::string configuredProtocol;  // command 1: the protocol to run after the next start
    int protocolWrites = 0;  // how many times command 1 was received
};

DeviceState deviceState(VoiceModuleEmulator &emulator);
void setLed(VoiceModuleEmulator &emulator, int state);
void setProfileCounts(VoiceModuleEmulator &emulator, int profiles, int maxLinesPerProfile);
void setPrivateProtocol(VoiceModuleEmulator &emulator, int enable, int ignoreClearConfig);

// Codec selection of the voice profile bound to a line's port: payload types in order of
// preference (empty when the port has no profile or the profile selects none).
std::vector<int> codecSelection(VoiceModuleEmulator &emulator, int line);
// Packetization period (ms) and silence suppression of that profile (0 when there is none).
int profilePacketization(VoiceModuleEmulator &emulator, int line);
int profileSilenceSuppression(VoiceModuleEmulator &emulator, int line);

}  // namespace vmemu
