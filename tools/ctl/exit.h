// The client's exit codes and its one-line usage error.
#pragma once

#include <cstdio>
#include <string>

namespace tr104ctl {

constexpr int kExitFailed = 1;  // the handler ran and returned -1 or -2
constexpr int kExitUsage = 2;  // the request was wrong: name, value kind, locator, option

inline int fail(const std::string &message) {
    std::fprintf(stderr, "tr104ctl: %s\n", message.c_str());
    return kExitUsage;
}

}  // namespace tr104ctl
