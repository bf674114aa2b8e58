// `tr104ctl init`: the library's full start-up and a report of what runs.
#pragma once

#include "ctl/library.h"

namespace tr104ctl {

// What start-up set up, checked from the outside.  0 when everything is in place, else 1.
int reportStartup(const Library &lib, int kind);

}  // namespace tr104ctl
