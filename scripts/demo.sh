#!/usr/bin/env bash
# The main job: build the library and the tools, start the emulated voice module, exercise the
# library against it and show what the voice module saw.  Runs in a private IPC namespace
# when it can, so it never meets a real voice module's queues on the same machine.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ -z "${TR104_DEMO_INNER:-}" ]; then
  bash scripts/install-deps.sh
  cmake --preset host >/dev/null
  cmake --build --preset host -j "$(nproc 2>/dev/null || echo 2)" --target tr104-vmemu tr104-demo
  if unshare --ipc true 2>/dev/null; then
    exec env TR104_DEMO_INNER=1 unshare --ipc bash "$0"
  fi
fi
bin=build/host/tools
ready=$(mktemp -u /tmp/tr104-vmemu-ready.XXXXXX)
"$bin/tr104-vmemu" --ready-file "$ready" </dev/null &
emu=$!
trap 'kill -INT $emu 2>/dev/null || true; rm -f "$ready"' EXIT
for _ in $(seq 100); do [ -e "$ready" ] && break; sleep 0.1; done
"$bin/tr104-demo"
kill -INT $emu
wait $emu
trap - EXIT
rm -f "$ready"
