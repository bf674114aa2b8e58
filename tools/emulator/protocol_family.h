// The voice module's protocol name (command 2), as the emulator reports it.
#pragma once

#include <string>

#include "emulator/voice_module_emulator.h"

namespace vmemu {

// The name every emulator reports until told otherwise.
inline constexpr const char *kDefaultProtocolName = "SIP";

// Sets the text command 2 answers with ("SIP", "H.248" or anything else).
void setProtocolName(VoiceModuleEmulator &emulator, const std::string &name);
std::string protocolName(VoiceModuleEmulator &emulator);

}  // namespace vmemu
