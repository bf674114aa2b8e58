// The areas' commands and demo sections in order.
#include "ctl/areas.h"

#include <cerrno>
#include <cstdlib>

namespace tr104ctl {

CLI::Validator numberIn(long low, long high) {
    return CLI::Validator(
        [low, high](std::string &text) {
            char *end = nullptr;
            errno = 0;
            const long value = std::strtol(text.c_str(), &end, 10);
            if (text.empty() || *end != '\0' || errno != 0 || value < low || value > high) {
                return "give a number from " + std::to_string(low) + " to " + std::to_string(high) + ", not '" + text +
                       "'";
            }
            return std::string();
        },
        std::to_string(low) + ".." + std::to_string(high));
}

namespace {

// One row per area: its commands and its demo section (none for the paths), in the client's
// order.
struct Area {
    std::vector<AreaCommand> (*commands)();
    int (*demo)(Context &context);
};

constexpr Area kAreas[] = {
    {h248Commands, runH248Demo},   {linetestCommands, runLinetestDemo}, {netcfgCommands, runNetcfgDemo},
    {statsCommands, runStatsDemo}, {deviceCommands, runDeviceDemo},     {pathCommands, nullptr},
};

}  // namespace

std::vector<AreaCommand> allAreaCommands() {
    std::vector<AreaCommand> all;
    for (const Area &area : kAreas) {
        std::vector<AreaCommand> some = area.commands();
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

int runAreaDemos(Context &context) {
    int problems = 0;
    for (const Area &area : kAreas) {
        if (area.demo != nullptr) {
            problems += area.demo(context);
        }
    }
    return problems;
}

}  // namespace tr104ctl
