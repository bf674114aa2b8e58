// The H.248 side of the emulated voice module, as tests and tools drive it.
//
// The voice module keeps the H.248 blocks (MGC, MID, naming, heartbeat, transaction timers,
// registration, authentication, local port, digit timers, line enable, match mode, RTP ports,
// fax and voice-band data, caller id), the termination id of each line, the port status and the
// statistics of each line.  A set changes only the fields named by its change mask (the fax
// block's mask is one whole value); the MGC block's index word names the entry a request
// concerns.  The counters and the status texts below are what the signalling stack would change.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "emulator/voice_module_emulator.h"
#include "tr104/h248.h"

namespace vmemu::h248 {

// A statistics field of a line (offset in Tr104H248StatsBlock); the gateway's signalling
// counters are the fields of line 1.
void setCounter(VoiceModuleEmulator &emulator, int line, uint32_t offset, uint32_t value);
uint32_t counter(VoiceModuleEmulator &emulator, int line, uint32_t offset);

// The port status of a line: registration text ("IDLE", "REGING" ...), hook text, session type,
// port status code, service state, session RTP port.
struct PortStatus {
    std::string regState = "INACTIVE";
    std::string hookState = "OnHook";
    uint8_t sessionType = 0;
    uint8_t portState = 0;
    uint8_t serviceState = 0;
    uint32_t localRtpPort = 0;
    uint32_t announceType = 0;
};
void setPortStatus(VoiceModuleEmulator &emulator, int line, const PortStatus &status);
PortStatus portStatus(VoiceModuleEmulator &emulator, int line);

// The MGC the gateway is attached to: internal status code (0 registered, 1 registering,
// 2 unregistered, other failed), current MGC number and address.
void setMgcState(VoiceModuleEmulator &emulator, uint32_t status, uint32_t currentNumber, const std::string &address);

// The stored block a get command answers (for the termination ids and line blocks, the line's).
std::vector<char> block(VoiceModuleEmulator &emulator, uint32_t getCmd, int line = 0);

// Switches the voice module's protocol: the name command 2 reports ("H.248" or "SIP") and an
// inbound protocol change (command 3, refresh, type 2 or 4) to `module`.  false when the
// inbound message could not be sent.
bool switchProtocol(VoiceModuleEmulator &emulator, long module, bool h248);

// Back to the voice module's first state (tests start from it).
void reset(VoiceModuleEmulator &emulator);

}  // namespace vmemu::h248
