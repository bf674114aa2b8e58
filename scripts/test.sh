#!/usr/bin/env bash
# The whole test suite: installs what is missing, then builds and runs every configuration.
set -euo pipefail
cd "$(dirname "$0")/.."
start=$SECONDS
bash scripts/install-deps.sh
jobs=$(nproc 2>/dev/null || echo 2)

run_preset() {
  local p=$1
  echo "=== $p: configure, build, test ==="
  cmake --preset "$p" >/dev/null
  cmake --build --preset "$p" -j "$jobs"
  ctest --preset "$p"
}

run_preset host
run_preset asan
run_preset tsan
echo "=== all suites passed in $((SECONDS - start)) s ==="
