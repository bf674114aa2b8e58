// What the stand-in management agent of this test program has been told.
#pragma once

#include <string>
#include <utility>
#include <vector>

struct AgentCall {
    int module;
    std::vector<std::pair<std::string, std::string>> pairs;
};
extern std::vector<AgentCall> gAgentCalls;
