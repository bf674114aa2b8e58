#!/usr/bin/env bash
# The whole test suite: installs what is missing, then builds and runs every configuration:
# the host build, the host build under AddressSanitizer+UBSan and under ThreadSanitizer, and the
# device build (32-bit big-endian MIPS: library, emulator and tests cross-built, every test run
# under qemu-mips).  After the host build: the USP agent check, the USP controller check (through
# an MQTT broker), tr104-voiced against a real registrar, and the house rules.  Every suite runs even when an earlier one fails, so that one
# run shows all failures; the command succeeds only when every suite passes.
set -euo pipefail
cd "$(dirname "$0")/.."
start=$SECONDS
bash scripts/install-deps.sh
jobs=$(nproc 2>/dev/null || echo 2)
export TR104_JOBS=$jobs

results=()
failed=0
run_preset() {
  local p=$1 t0=$SECONDS status=passed
  echo "=== $p: configure, build, test ==="
  if ! { cmake --preset "$p" >/dev/null && cmake --build --preset "$p" -j "$jobs" && ctest --preset "$p"; }; then
    status=FAILED
    failed=1
  fi
  results+=("$p $status in $((SECONDS - t0)) s")
}

run_preset host
# A check script on the host build: run_check NAME SCRIPT.
run_check() {
  local t0=$SECONDS
  if bash "$2" build/host; then
    results+=("$1 passed in $((SECONDS - t0)) s")
  else
    results+=("$1 FAILED in $((SECONDS - t0)) s")
    failed=1
  fi
}
# The voice data model served through a USP agent (the agent is built once into build/host).
run_check usp-agent scripts/usp-agent-check.sh
# The same through a USP controller (usp-js) and an MQTT broker (mosquitto), in private namespaces.
run_check usp-controller scripts/usp-controller-check.sh
# tr104-voiced against a real registrar (Kamailio), in a private network and IPC namespace.
run_check voiced scripts/voiced-check.sh
# House rules (scripts/check-style.sh) on the host build's compile commands.
run_check style scripts/check-style.sh
run_preset asan
run_preset tsan
run_preset mips
# Fuzz smoke: every fuzz target for a short bounded time over its seeds and regression inputs.
t0=$SECONDS
if bash scripts/fuzz.sh --smoke; then results+=("fuzz passed in $((SECONDS - t0)) s"); else results+=("fuzz FAILED in $((SECONDS - t0)) s"); failed=1; fi
printf '=== %s\n' "${results[@]}"
if [ -f build/mips/libtr104.stripped.so ]; then
  echo "=== stripped MIPS libtr104.so: $(wc -c < build/mips/libtr104.stripped.so) bytes ==="
fi
if ((failed)); then
  echo "=== some suites FAILED ($((SECONDS - start)) s) ==="
  exit 1
fi
echo "=== all suites passed in $((SECONDS - start)) s ==="
