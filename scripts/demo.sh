#!/usr/bin/env bash
# The main job: build the library and the command-line client, then run the client's scripted
# tour.  tr104ctl loads libtr104.so with dlopen as the management agent does, plays the voice
# module itself in a private IPC namespace (so it never meets a real voice module's queues on
# the same machine) and starts the library in full (Tr104VoiceCfgInit).  It reads and writes
# line enable, gains, timers and the digit map; shows the deferred buffer sending a proxy's
# address and port as one write at the second call, and applying a registrar port written alone
# by its timer after 5 s (read, merge, write), each request with the time it arrived; shows a
# change notification coming through the inbound thread and a protocol change; and prints what
# the voice module received.  It exits non-zero when the deferred buffer or the inbound thread
# did not behave as shown.
#
# With --real: the same chain on a real SIP network instead (scripts/demo-real.sh): a registrar,
# tr104-voiced with its SIP user agent, registration and a call with its counters.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${1:-}" = "--real" ]; then
  exec bash scripts/demo-real.sh
fi
bash scripts/install-deps.sh
cmake --preset host >/dev/null
cmake --build --preset host -j "$(nproc 2>/dev/null || echo 2)" --target tr104 tr104ctl
exec build/host/tools/tr104ctl demo
