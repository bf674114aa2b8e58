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

std::vector<AreaCommand> allAreaCommands() {
    std::vector<AreaCommand> all;
    for (auto commands :
         {h248Commands, linetestCommands, netcfgCommands, statsCommands, deviceCommands, pathCommands}) {
        std::vector<AreaCommand> some = commands();
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

int runAreaDemos(Context &context) {
    int problems = 0;
    problems += runH248Demo(context);
    problems += runLinetestDemo(context);
    problems += runNetcfgDemo(context);
    problems += runStatsDemo(context);
    problems += runDeviceDemo(context);
    return problems;
}

}  // namespace tr104ctl
