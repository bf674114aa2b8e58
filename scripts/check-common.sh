# Helpers every check script shares (sourced): counting results, waiting on a condition with a
# bound, timing, stopping a process by its id.  A check prints "ok   NAME" or "FAIL NAME: DETAIL"
# and ends with `checkSummary`, which prints "N passed, M failed" and fails when M > 0.
[ -n "${CHECK_COMMON:-}" ] && return 0  # sourced once: the counts stay
CHECK_COMMON=1
passed=0 failed=0

check() {  # NAME RESULT(0 = pass) [DETAIL]
  if [ "$2" -eq 0 ]; then
    passed=$((passed + 1)); echo "ok   $1"
  else
    failed=$((failed + 1)); echo "FAIL $1${3:+: $3}"
  fi
}
checkSummary() {
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}
# The check cannot start at all: one failure, the reason, and the summary.  giveUp NAME WHY
giveUp() {
  echo "$1: $2"
  echo "0 passed, 1 failed"
  exit 1
}

now() { date +%s.%N; }
since() { printf '%.1f' "$(echo "$(now) - $1" | bc)"; }
# Waits until the command succeeds, at most S seconds: waitFor S CMD...
waitFor() {
  local end=$(($(date +%s) + $1))
  shift
  until "$@"; do
    [ "$(date +%s)" -ge "$end" ] && return 1
    sleep 0.2
  done
}
# Stops a process by its id: SIGTERM, then waits for it at most S seconds.  stopProcess PID S
stopProcess() {
  kill -TERM "$1" 2>/dev/null
  waitFor "$2" bash -c "! kill -0 $1 2>/dev/null"
  wait "$1" 2>/dev/null
}
