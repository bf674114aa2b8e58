// `tr104ctl watch`: the library runs with its inbound thread, and every change it reports to
// the management agent is printed as the agent receives it.  With the emulator, a scripted
// series of changes is pushed on the inbound queue; otherwise the client waits for the voice
// module of this machine.
#pragma once

#include <cstdint>

#include "ctl/library.h"
#include "emulator/voice_module_emulator.h"

namespace tr104ctl {

// Inbound commands with which the voice module reports a changed value.
constexpr uint32_t kInboundRegistrar = 16391;
constexpr uint32_t kInboundProxy = 16395;
constexpr uint32_t kInboundDirectoryNumber = 16584;
constexpr uint32_t kInboundAuthentication = 16587;

// One change the emulated voice module reports.
struct ScriptedChange {
    uint32_t cmd;
    uint32_t lineOrFlag;  // line (line records) or server flag (server records)
    const char *first;  // number, user name or server address
    const char *second;  // password (authentication only)
    uint16_t port;  // server records
};

// The emulated voice module reports one change on this process's inbound queue; the line
// that describes it is followed by what the agent received once the inbound thread has handled
// it.  false when the message could not be pushed or was never read.
bool pushChange(const Library &lib, vmemu::VoiceModuleEmulator &emulator, const ScriptedChange &change);

// The emulated voice module pushes the script; each change is followed by what the agent
// received for it.  0, or 1 when a message could not be pushed or was never read.
int watchScripted(const Library &lib, vmemu::VoiceModuleEmulator &emulator);

// Waits for the voice module of this machine: until `seconds` pass (0: no limit), `count`
// notifications have arrived (0: no limit) or SIGINT/SIGTERM, which the caller has blocked in
// every thread before the library started.
int watchLive(const Library &lib, int seconds, int count);

// Signals that end a live watch, blocked before any thread starts so that every thread
// inherits the mask and only sigtimedwait sees them.
void blockStopSignals();

}  // namespace tr104ctl
