// The management agent's side of change notification: the client prints every name/value pair
// the library reports and counts the calls, so that `watch` and `demo` can tell whether a
// message of the voice module reached the agent.
#pragma once

#include <atomic>

namespace tr104ctl {

struct AgentCounters {
    std::atomic<unsigned> calls{0};  // calls of notifyChangedValues_toTr069
    std::atomic<unsigned> values{0};  // name/value pairs in them
};

// The counters of this process's agent entry point (the library calls it from its inbound
// thread, with no context of the client's).
AgentCounters &agentCounters();

// One call of the agent's entry point, printed as it arrives.  An empty name (a directory
// number of a line without a path) is shown as ""; a hidden value as "" (hidden).
int receiveNotification(int module, char **names, char **values, int count);

}  // namespace tr104ctl
