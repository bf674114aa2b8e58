// `tr104ctl get NAME` and `set NAME VALUE`: one call of a handler by name or of a path.
#pragma once

#include "ctl/area.h"
#include "ctl/invoke.h"

namespace tr104ctl {

// One get or set, as the agent makes it.  A set of a deferred parameter by handler name ends
// only once its slot has been applied.  Returns the exit code.
int runCall(Context &context, const CallRequest &requested);

}  // namespace tr104ctl
