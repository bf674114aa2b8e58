#!/usr/bin/env bash
# The whole test suite: installs what is missing, then builds and runs every configuration:
# the host build, the host build under AddressSanitizer+UBSan and under ThreadSanitizer, and the
# device build (32-bit big-endian MIPS: library, emulator and tests cross-built, every test run
# under qemu-mips).  Succeeds only when every suite passes.
set -euo pipefail
cd "$(dirname "$0")/.."
start=$SECONDS
bash scripts/install-deps.sh
jobs=$(nproc 2>/dev/null || echo 2)
export TR104_JOBS=$jobs

timings=()
run_preset() {
  local p=$1 t0=$SECONDS
  echo "=== $p: configure, build, test ==="
  cmake --preset "$p" >/dev/null
  cmake --build --preset "$p" -j "$jobs"
  ctest --preset "$p"
  timings+=("$p $((SECONDS - t0)) s")
}

run_preset host
run_preset asan
run_preset tsan
run_preset mips
echo "=== suite times: $(IFS=,; echo "${timings[*]}" | sed 's/,/, /g') ==="
echo "=== all suites passed in $((SECONDS - start)) s ==="
