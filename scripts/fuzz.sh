#!/usr/bin/env bash
# Builds the libFuzzer targets (the fuzz preset: clang, AddressSanitizer, UndefinedBehaviorSanitizer)
# and fuzzes each over its seed corpus and its regression inputs.
#   scripts/fuzz.sh --smoke             every target for a short bounded time (CI)
#   scripts/fuzz.sh --campaign SECONDS [TARGET...]
#                                       every target (or those named) for SECONDS, one worker,
#                                       at niceness 10; prints executions and coverage per target
# The grown corpus goes to build/fuzz/corpus/<target> (the seeds in fuzz/corpus stay as they
# are); a crash leaves its input in build/fuzz/artifacts/ and fails the run.  Keep a crash's input
# in fuzz/regressions/<target>/ once the library is fixed.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=${1:---smoke}
case $mode in
  --smoke) seconds=${TR104_FUZZ_SMOKE_SECONDS:-25}; nice=0 ;;
  --campaign) seconds=${2:?--campaign SECONDS}; nice=10; shift 2 ;;
  *) echo "usage: $0 [--smoke | --campaign SECONDS]" >&2; exit 2 ;;
esac
targets=(fuzz_inbound fuzz_replies fuzz_common fuzz_paths)
if [ "$mode" = --campaign ] && (($#)); then
  targets=("$@")
fi
jobs=${TR104_JOBS:-$(nproc 2>/dev/null || echo 2)}

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$jobs"

out=build/fuzz
mkdir -p "$out/artifacts"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-halt_on_error=1:print_stacktrace=1}
failed=0
summary=()
for t in "${targets[@]}"; do
  corpus=$out/corpus/$t
  mkdir -p "$corpus"
  dirs=("$corpus" "fuzz/corpus/$t")
  [ -d "fuzz/regressions/$t" ] && dirs+=("fuzz/regressions/$t")
  log=$out/$t.log
  # The regression inputs first, each run once as it stands: every one must still reach what it
  # was kept for.
  if [ -d "fuzz/regressions/$t" ] && ! TR104_FUZZ_REGRESSION=1 "$out/fuzz/$t" fuzz/regressions/"$t"/* >"$log" 2>&1; then
    failed=1
    summary+=("$t FAILED on a regression input (log: $log)")
    tail -30 "$log"
    continue
  fi
  echo "=== fuzz $t: ${seconds} s"
  # One worker, in this process; -timeout: an input that runs longer than 10 s is a hang.
  if nice -n "$nice" "$out/fuzz/$t" -max_total_time="$seconds" -max_len=4100 -timeout=10 -rss_limit_mb=2048 \
       -print_final_stats=1 -artifact_prefix="$out/artifacts/$t-" "${dirs[@]}" >"$log" 2>&1; then
    status=ok
  else
    status=FAILED
    failed=1
    grep -A30 -E '^==[0-9]+==ERROR|runtime error|deadly signal|timeout after' "$log" | head -60 || tail -30 "$log"
  fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  cov=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -1)
  summary+=("$t $status: ${runs:-?} executions, ${cov:-no coverage line}")
done
printf '=== %s\n' "${summary[@]}"
if ((failed)); then
  echo "=== fuzz: FAILED (inputs in $out/artifacts)"
  exit 1
fi
echo "=== fuzz: 0 crashes"
