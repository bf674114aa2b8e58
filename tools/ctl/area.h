// What an area of the library adds to the client: commands of its own (`tr104ctl linetest ...`)
// and a section of the demo.  Each area has its header in ctl/area/, gathered by ctl/areas.h.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

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

// `tr104ctl [options] NAME [its options and arguments]`: define() declares the command's options
// and arguments on its subcommand of the client's command line, bound to the area's own
// variables; run() then runs it.  run() returns the exit code: 0 done, 1 failed, 2 usage.
struct AreaCommand {
    const char *name;
    const char *description;  // one line for the client's help
    void (*define)(CLI::App &command);
    int (*run)(const AreaContext &context);
    bool fullStart = false;  // run the library's full start-up (Tr104VoiceCfgInit) first
};

// An integer option within [low, high]: "give a number from LOW to HIGH, not 'TEXT'".
inline CLI::Validator numberIn(long low, long high) {
    return CLI::Validator(
        [low, high](std::string &text) {
            char *end = nullptr;
            errno = 0;
            const long value = std::strtol(text.c_str(), &end, 10);
            if (text.empty() || *end != '\0' || errno != 0 || value < low || value > high) {
                return "give a number from " + std::to_string(low) + " to " + std::to_string(high) + ", not '" +
                       text + "'";
            }
            return std::string();
        },
        std::to_string(low) + ".." + std::to_string(high));
}

// A command without options or arguments.
inline void noArguments(CLI::App &) {}

}  // namespace tr104ctl
