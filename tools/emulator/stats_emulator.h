// The voice module's statistics as tests, the demo and tr104-vmemu drive them: RTP statistics
// of each line and of its 15-minute intervals, the SIP call counters of each line and the
// telephone-event settings.  A call advances every counter a real call would.
#pragma once

#include <cstdint>

#include "emulator/voice_module_emulator.h"
#include "tr104/statistics.h"

namespace vmemu::stats {

// Family names of the records.
inline constexpr const char *kRtpFamily = "rtp line statistics";
inline constexpr const char *kIntervalFamily = "rtp interval statistics";
inline constexpr const char *kSipFamily = "sip line statistics";
inline constexpr const char *kTelEventFamily = "telephone events";

// The stored records (zero-filled with the key when none is stored yet).
Tr104LineRtpStatsBlock rtp(VoiceModuleEmulator &emulator, uint32_t line);
Tr104LineRtpIntervalBlock interval(VoiceModuleEmulator &emulator, uint32_t line, uint32_t number);
Tr104SipLineStatsRecord sip(VoiceModuleEmulator &emulator, uint32_t line);
// Replace them (the key fields of the record say which line and interval).
void setRtp(VoiceModuleEmulator &emulator, const Tr104LineRtpStatsBlock &block);
void setInterval(VoiceModuleEmulator &emulator, const Tr104LineRtpIntervalBlock &block);
void setSip(VoiceModuleEmulator &emulator, const Tr104SipLineStatsRecord &record);

// A finished call of `seconds` on a line, incoming or outgoing, answered or not: the call and
// signalling counters, the RTP packets and bytes (50 packets of 172 bytes a second each way, one
// packet in a hundred lost) and the current interval (0) advance.
void addCall(VoiceModuleEmulator &emulator, uint32_t line, uint32_t seconds, bool incoming, bool answered = true);
// What the statistics reset of a line clears.
void resetLine(VoiceModuleEmulator &emulator, uint32_t line);

}  // namespace vmemu::stats
