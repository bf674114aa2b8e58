// The scripted tour of `tr104ctl demo`: learn the protocol, read and write a line's enable,
// gains, timers and digit map, group server writes in the deferred buffer, see a change
// notification come through the inbound thread and a protocol change, and show what the voice
// module received.  It runs against the in-process emulator only, after the library's full
// start-up.
#pragma once

#include "ctl/area.h"

namespace tr104ctl {

// The tour; 0 when every step behaved as shown, else 1.
int runDemo(Context &context);

}  // namespace tr104ctl
