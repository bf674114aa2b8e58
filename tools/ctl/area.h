// What an area of the library adds to the client: commands of its own (`tr104ctl linetest ...`)
// and a section of the demo.  Each area has its header in ctl/area/, gathered by ctl/areas.h.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "ctl/library.h"
#include "emulator/voice_module_emulator.h"

namespace tr104ctl {

// What an area command runs with: the loaded library, the emulator when the client plays the
// voice module (nullptr when it talks to this machine's voice module), the module kind.
struct AreaContext {
    const Library &lib;
    vmemu::VoiceModuleEmulator *emulator;
    int moduleKind;
};

// `tr104ctl [options] NAME ARGS...`: the client parses its own options before NAME and hands
// every argument after NAME to run().  run() returns the exit code: 0 done, 1 failed, 2 usage.
struct AreaCommand {
    const char *name;
    const char *usage;  // one or more lines, each starting with "tr104ctl [options] NAME"
    int (*run)(const AreaContext &context, const std::vector<std::string> &args);
    bool fullStart = false;  // run the library's full start-up (Tr104VoiceCfgInit) first
};

}  // namespace tr104ctl
