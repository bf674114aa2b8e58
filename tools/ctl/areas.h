// Every area's commands and demo section, in one place for tr104ctl and its demo.
#pragma once

#include <array>
#include <cstring>
#include <span>

#include "ctl/area.h"
#include "ctl/area/h248.h"
#include "ctl/area/linetest.h"
#include "ctl/area/netcfg.h"
#include "ctl/area/paths.h"
#include "ctl/area/stats.h"
#include "ctl/area/device.h"

namespace tr104ctl {

inline constexpr std::array<std::span<const AreaCommand>, 6> kAreaCommandTables = {
    kH248Commands, kLinetestCommands, kNetcfgCommands, kStatsCommands, kDeviceCommands, kPathCommands};

inline const AreaCommand *findAreaCommand(const char *name) {
    for (std::span<const AreaCommand> table : kAreaCommandTables) {
        for (const AreaCommand &command : table) {
            if (std::strcmp(command.name, name) == 0) {
                return &command;
            }
        }
    }
    return nullptr;
}

// The areas' demo sections in order; the number of problems they saw.
inline int runAreaDemos(const Library &lib, vmemu::VoiceModuleEmulator &emulator) {
    int problems = 0;
    problems += runH248Demo(lib, emulator);
    problems += runLinetestDemo(lib, emulator);
    problems += runNetcfgDemo(lib, emulator);
    problems += runStatsDemo(lib, emulator);
    problems += runDeviceDemo(lib, emulator);
    return problems;
}

}  // namespace tr104ctl
