// Every area's commands and demo section, in one place for tr104ctl and its demo.
#pragma once

#include <vector>

#include "ctl/area.h"

namespace tr104ctl {

// The areas' commands, each with its own arguments.
std::vector<AreaCommand> h248Commands();
std::vector<AreaCommand> linetestCommands();
std::vector<AreaCommand> netcfgCommands();
std::vector<AreaCommand> statsCommands();
std::vector<AreaCommand> deviceCommands();
std::vector<AreaCommand> pathCommands();

// The areas' demo sections, run against the emulator after the library's full start-up.  Each
// returns the number of problems it saw (0 when everything behaved as shown).
int runH248Demo(Context &context);
int runLinetestDemo(Context &context);
int runNetcfgDemo(Context &context);
int runStatsDemo(Context &context);
int runDeviceDemo(Context &context);

std::vector<AreaCommand> allAreaCommands();
int runAreaDemos(Context &context);

}  // namespace tr104ctl
