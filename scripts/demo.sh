#!/usr/bin/env bash
# The main job: build the library and the command-line client, then run the client's scripted
# tour.  tr104ctl loads libtr104.so with dlopen as the management agent does, plays the voice
# module itself in a private IPC namespace (so it never meets a real voice module's queues on
# the same machine), reads and writes line enable, gains, timers and the digit map, shows a
# change notification and a protocol change, and prints what the voice module received.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake --preset host >/dev/null
cmake --build --preset host -j "$(nproc 2>/dev/null || echo 2)" --target tr104 tr104ctl
exec build/host/tools/tr104ctl demo
