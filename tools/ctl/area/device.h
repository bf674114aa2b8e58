// The device area of the client: its commands and its section of the demo.
#pragma once

#include <span>

#include "ctl/area.h"

namespace tr104ctl {

inline constexpr std::span<const AreaCommand> kDeviceCommands{};

// The demo's device section, run against the emulator after the library's full start-up.  Returns
// the number of problems seen (0 when everything behaved as shown).
inline int runDeviceDemo(const Library &, vmemu::VoiceModuleEmulator &) { return 0; }

}  // namespace tr104ctl
