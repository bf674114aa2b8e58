#!/usr/bin/env bash
# tr104ctl linetest and simcall end to end, against a voice-module emulator of its own process
# whose line tests and simulated calls are set up through its console.
#
# usage: linetest_ctl_test.sh <tr104ctl> <tr104-vmemu>
# TR104_RUN: program (with arguments) that runs target binaries (qemu for a cross build).  The
# script runs in a private IPC namespace of its own.
set -uo pipefail
[ -n "${LINETEST_CTL_INNER:-}" ] || exec env LINETEST_CTL_INNER=1 unshare --ipc bash "$0" "$@"
ctl=$1 vmemu=$2 failures=0
work=$(mktemp -d /tmp/linetest-ctl.XXXXXX)
read -r -a run <<< "${TR104_RUN:-}"

# check NAME WANT_EXIT PATTERN... -- ARGS...: runs tr104ctl against the emulator; wants the exit
# code and every fixed-string PATTERN in the output.
check() {
  local name=$1 want=$2 patterns=() pattern matched=1
  shift 2
  while [ "$1" != "--" ]; do patterns+=("$1"); shift; done
  shift
  out=$("${run[@]}" "$ctl" --no-emulate "$@" 2>&1)
  status=$?
  for pattern in "${patterns[@]}"; do grep -qF -- "$pattern" <<< "$out" || matched=0; done
  if [ "$status" -ne "$want" ] || [ "$matched" -ne 1 ]; then
    echo "FAIL $name: exit $status (want $want), output:"; sed 's/^/    /' <<< "$out"
    echo "    (wanted to see: $(printf '%s | ' "${patterns[@]}"))"
    failures=$((failures + 1))
  else
    echo "ok   $name"
  fi
}

# console LINE EXPECT: one emulator console command, waiting until its answer is in the log.
console() {
  echo "$1" >&3
  for _ in $(seq 300); do grep -qF -- "$2" "$work/vmemu.log" && return; sleep 0.05; done
  echo "FAIL console '$1': no '$2'"; failures=$((failures + 1))
}

# The emulator reads its console from a pipe; it is ready once its ready file exists.
mkfifo "$work/console"
"${run[@]}" "$vmemu" --quiet --ready-file "$work/up" <"$work/console" >"$work/vmemu.log" 2>&1 &
emu=$!
exec 3>"$work/console"
for _ in $(seq 300); do [ -e "$work/up" ] && break; sleep 0.1; done
if ! [ -e "$work/up" ]; then echo "FAIL tr104-vmemu did not start"; cat "$work/vmemu.log"; exit 1; fi

console "linetest duration 300" "duration 300 ms"
console "simcall step 200" "step 200 ms"
check "outer line test" 0 "port 1: Testing" "port 1: Complete" "A-B insulation resistance" "15000  kohm" \
  "VACFlags                  63  111111" "conclusion: Normal" -- \
  linetest --port 1 --threshold VACHazardousThreshold=50 --threshold gRingerEquivalenceMax=5
console "linetest set 2 aGroundACVoltage 80" "aGroundACVoltage=80"
console "linetest conclusion 2 5" "conclusion 5"
check "a faulty line" 0 "A-ground AC voltage OUT OF LIMITS" "conclusion: PowerLineContacted" -- \
  linetest --port 2 --threshold VACHazardousThreshold=50
check "inner line test" 0 "signal tone volume" "-12.5  dBm" "loop current passed" -- \
  linetest --port 1 --selector Inner_Line_Test
console "linetest unsupported 2 on" "(not supported)"
check "test not supported" 1 "ended with \"Error_TestNotSupported\"" -- linetest --port 2
console "linetest duration 10000" "duration 10000 ms"
check "line test timeout" 1 "did not complete within 1 s" -- linetest --port 1 --timeout 1
check "unknown threshold" 2 "unknown threshold 'Loudness'" -- linetest --port 1 --threshold Loudness=3
check "port 3" 2 "--port: give a number from 1 to 2, not '3'" -- linetest --port 3

check "caller test" 0 "port 1: Off-hook" "port 1: Testend" "Success" "fail reason          none" -- \
  simcall --port 1 --caller 5550123 --timeout 20
check "caller test past its timeout" 1 "Testend" "Fail" "NoAnswer" -- simcall --port 2 --caller 1 --timeout 1
check "called test" 0 "port 2: Ringing-back" "Success" -- simcall --port 2 --called
# The fail code follows port 1's test type (the only port asked here).
console "simcall end 1 2" "end fail 2"
check "failing caller test" 1 "Testend" "Fail" "NoDailTone" "fail code            2" -- \
  simcall --port 1 --caller 100
check "caller and called" 2 "--caller excludes --called" -- simcall --port 1 --caller 5 --called
check "caller without a number" 2 "--caller NUMBER or --called is required" -- simcall --port 1 --caller ""
check "no test type" 2 "--caller NUMBER or --called is required" -- simcall --port 1

exec 3>&-
kill -INT "$emu" 2>/dev/null
wait "$emu" 2>/dev/null
rm -rf "$work"
[ "$failures" -eq 0 ] && echo "all linetest client checks passed" || echo "$failures check(s) failed"
exit $((failures > 0))
