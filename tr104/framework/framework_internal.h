// What the dispatching wrappers hand to core.
#pragma once

#include "tr104/core/registry.h"

namespace tr104::framework {

// The inbound change messages and the wrappers that report them.
extern const core::Registration kChangeRegistration;

}  // namespace tr104::framework
