// `tr104ctl set PATH VALUE [PATH VALUE]...`: data-model sets applied as one management message
// is.  Every pair is checked first (path, access, value), so that a bad pair leaves the voice
// module untouched; then the handlers run in order, and the groups of the deferred buffer that
// the sets left waiting are written at the end, once each, instead of by their slots' timers.
#pragma once

#include <string>
#include <vector>

#include "ctl/area.h"
#include "tr104/map.h"

namespace tr104ctl {

struct PathSet {
    std::string path;
    std::string handlerValue;  // the value as the handler takes it
    const Tr104MapEntry *entry = nullptr;
    int locate[4] = {0, 0, 0, 0};
};

// The pairs of a set, checked; false with one line in *why when a pair is wrong.
bool checkPathSets(const std::vector<std::string> &words, std::vector<PathSet> *sets, std::string *why);

// Runs checked sets.  0, or 1 when a handler failed (what came before it stays as it is; what it
// left staged is not sent).
int runPathSets(Context &context, const std::vector<PathSet> &sets);

}  // namespace tr104ctl
