// The management agent's side of change notification: the client prints every name/value pair
// the library reports and counts the calls, so that `watch` and `demo` can tell whether a
// message of the voice module reached the agent.
#pragma once

#include <atomic>
#include <cstdio>

namespace tr104ctl {

struct AgentCounters {
    std::atomic<unsigned> calls{0};   // calls of notifyChangedValues_toTr069
    std::atomic<unsigned> values{0};  // name/value pairs in them
};

inline AgentCounters &agentCounters() {
    static AgentCounters counters;
    return counters;
}

// One call of the agent's entry point, printed as it arrives.  An empty name (a directory
// number of a line without a path) is shown as "".
inline int receiveNotification(int module, char **names, char **values, int count) {
    for (int i = 0; i < count; ++i) {
        const char *name = names != nullptr && names[i] != nullptr ? names[i] : "";
        const char *value = values != nullptr && values[i] != nullptr ? values[i] : "";
        std::printf("notify [module %d] %s = \"%s\"\n", module, name[0] != '\0' ? name : "\"\"", value);
    }
    std::fflush(stdout);
    AgentCounters &c = agentCounters();
    c.values.fetch_add(count > 0 ? static_cast<unsigned>(count) : 0u);
    c.calls.fetch_add(1);
    return 0;
}

}  // namespace tr104ctl
