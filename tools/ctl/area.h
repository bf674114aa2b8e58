// What the client's commands run with, and what an area of the library adds to the client:
// commands of its own (`tr104ctl linetest ...`) and a section of the demo.  Each area has its
// translation unit in ctl/area/, gathered by ctl/areas.h.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "ctl/library.h"
#include "emulator/voice_module_emulator.h"

namespace tr104ctl {

// How far the library has been started in this process.
enum class Started { Nothing, DeferredBuffer, Full };

// What a command runs with: the loaded library, the emulator when the client plays the voice
// module (nullptr when it talks to this machine's voice module), the module kind, and how far
// the library has been started.
struct Context {
    const Library &lib;
    vmemu::VoiceModuleEmulator *emulator;
    int moduleKind;
    Started started = Started::Nothing;
};

// `tr104ctl [options] NAME [its options and arguments]`: define() declares the command's options
// and arguments on its subcommand of the client's command line, bound to the command's own
// arguments; run() then runs it and returns the exit code: 0 done, 1 failed, 2 usage.
struct AreaCommand {
    const char *name;
    const char *description;  // one line for the client's help
    std::function<void(CLI::App &command)> define;
    std::function<int(Context &context)> run;
    bool fullStart = false;  // run the library's full start-up (Tr104VoiceCfgInit) first
};

// An integer option within [low, high]: "give a number from LOW to HIGH, not 'TEXT'".
CLI::Validator numberIn(long low, long high);

}  // namespace tr104ctl
