// Scripted handler calls of the demo tour, one line each: what was called, its result and
// why the step is there.
#pragma once

#include <cstddef>
#include <cstdio>

#include "ctl/library.h"

namespace tr104ctl {

struct DemoStep {
    const char *handler;
    bool set;
    const char *value;
    int line;  // nLocate[2]; 0 for a profile-wide parameter (not printed)
    const char *note;  // what the step shows
};

// Steps of one section of the tour; the number of steps skipped.
int runSteps(const Library &lib, const DemoStep *steps, size_t count);

// One row of a settings or statistics table: label, value and unit, or why there is no value.
// Returns 1 when the value could not be read, else 0.
int printValue(const Library &lib, const char *handler, int line, const char *label, const char *unit, int width);

template <size_t N>
int runSection(const Library &lib, const char *title, const DemoStep (&steps)[N]) {
    std::printf("\n== %s\n", title);
    return runSteps(lib, steps, N);
}

}  // namespace tr104ctl
