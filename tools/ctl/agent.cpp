// The agent's entry point as the client plays it.
#include "ctl/agent.h"

#include <cstdio>

#include "tr104/map.h"

namespace tr104ctl {

namespace {

// A parameter whose value the data model hides (a password): the client never prints it.
bool hiddenPath(const char *path) {
    const Tr104MapEntry *entry = nullptr;
    const int rc = tr104MapLookup(path, &entry, nullptr, nullptr, 0);
    return (rc == TR104_MAP_SERVED || rc == TR104_MAP_NOT_SERVED) && entry->hidden != 0;
}

}  // namespace

AgentCounters &agentCounters() {
    static AgentCounters counters;
    return counters;
}

int receiveNotification(int module, char **names, char **values, int count) {
    for (int i = 0; i < count; ++i) {
        const char *name = names != nullptr && names[i] != nullptr ? names[i] : "";
        const char *value = values != nullptr && values[i] != nullptr ? values[i] : "";
        const bool hidden = hiddenPath(name);
        std::printf("notify [module %d] %s = \"%s\"%s\n", module, name[0] != '\0' ? name : "\"\"", hidden ? "" : value,
                    hidden ? " (hidden)" : "");
    }
    std::fflush(stdout);
    AgentCounters &c = agentCounters();
    c.values.fetch_add(count > 0 ? static_cast<unsigned>(count) : 0u);
    c.calls.fetch_add(1);
    return 0;
}

}  // namespace tr104ctl
