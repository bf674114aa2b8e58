#!/usr/bin/env bash
# The voice data model through a USP controller over MQTT, timed beside the same operations
# through the agent's command-line client, against one agent and one emulator in the same run:
# a Get of the whole voice tree, a Get and a Set of one parameter, and the delay from a change
# the voice module reports to the controller's ValueChange notification.  Writes a markdown
# section (bench/run.sh puts it into bench/report.md).
#
#   bash bench/usp-controller.sh [--markdown FILE] [--update REPORT]
#
# --update replaces the section in an existing report (bench/report.md) without running the
# other benchmarks.  Root: the broker, the agent and the emulator run in a private network and
# IPC namespace.
set -uo pipefail
ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
LINE1=Device.Services.VoiceService.1.CallControl.Line.1.
TREE=Device.Services.VoiceService.
RUNS=20      # single Get and Set
TREE_RUNS=10 # whole-tree Get
CHANGES=5    # value changes
HEADING="## USP controller over MQTT (usp-js, mosquitto) beside the agent's command-line client"

if [ "${1:-}" != "--inside" ]; then
  markdown="" update=""
  while [ $# -gt 0 ]; do
    case $1 in
      --markdown) markdown=$2; shift 2 ;;
      --update) update=$2; shift 2 ;;
      *) echo "usage: bench/usp-controller.sh [--markdown FILE] [--update REPORT]"; exit 2 ;;
    esac
  done
  BUILD=$ROOT/build/host
  . "$ROOT/scripts/usp-agent-common.sh"
  buildAgentAndPlugin || exit 1
  installController || { echo "npm could not install the controller library"; exit 1; }
  section=$(mktemp)
  trap 'rm -f "$section"' EXIT
  unshare --net --ipc bash "${BASH_SOURCE[0]}" --inside "$BUILD" "$section" || exit 1
  [ -n "$markdown" ] && cp "$section" "$markdown"
  if [ -n "$update" ]; then
    # The report up to this section (or all of it), the section, then the sections after it.
    python3 - "$update" "$section" "$HEADING" <<'EOF'
import sys
report, section, heading = sys.argv[1], open(sys.argv[2]).read(), sys.argv[3]
text = open(report).read()
start = text.find(heading)
if start < 0:
    text = text.rstrip("\n") + "\n\n" + section
else:
    end = text.find("\n## ", start + len(heading))
    text = text[:start] + section + (text[end + 1:] if end >= 0 else "")
open(report, "w").write(text)
EOF
    echo "updated $update"
  fi
  [ -z "$markdown$update" ] && cat "$section"
  exit 0
fi
BUILD=$2
OUT=$3
ip link set lo up
WORK=$(mktemp -d)
. "$ROOT/scripts/usp-agent-common.sh"
cleanup() {
  for pid in $BROKER; do kill "$pid" 2>/dev/null; done
  stopAgentAndEmulator
  for pid in $BROKER; do wait "$pid" 2>/dev/null; done
  rm -rf "$WORK"
}
trap cleanup EXIT
fail() { echo "usp-controller bench: $*" >&2; exit 1; }

startBroker || fail "the broker did not start: $(tail -3 "$WORK/broker.log")"
startEmulator || fail "the emulator did not start"
startManagedAgent || fail "the agent did not connect to the broker: $(tail -3 "$WORK/agent.log")"

# Milliseconds: the median and the largest of the numbers on standard input.
stats() { sort -n | awk '{ v[NR] = $1 } END { printf "%.1f | %.1f", v[int((NR + 1) / 2)], v[NR] }'; }
ms() { echo "($(date +%s%N) - $1) / 1000000" | bc -l; }
# The controller's own time of each message (one connection, RUNS messages): "time MS" lines.
controllerTimes() {
  local runs=$1
  shift
  timeout 300 node "$CONTROLLER" --port "$BROKER_PORT" --agent "$AGENT_ID" --repeat "$runs" "$@" \
    2>"$WORK/times.txt" >"$WORK/values.txt" || fail "controller $*: $(tail -3 "$WORK/values.txt")"
  sed -n 's/^time //p' "$WORK/times.txt"
}
# The command-line client: one process per call, each timed from its start to its exit.
cliTimes() {
  local runs=$1 t0
  shift
  for _ in $(seq "$runs"); do
    t0=$(date +%s%N)
    cli "$@" >"$WORK/cli.txt"
    ms "$t0"
  done
}

treeController=$(controllerTimes "$TREE_RUNS" get "$TREE" | stats)
treeValues=$(grep -c ' => ' "$WORK/values.txt")
treeCli=$(cliTimes "$TREE_RUNS" get "$TREE" | stats)
cliValues=$(grep -c ' => ' "$WORK/cli.txt")
getController=$(controllerTimes "$RUNS" get "${LINE1}DirectoryNumber" | stats)
getCli=$(cliTimes "$RUNS" get "${LINE1}DirectoryNumber" | stats)
setController=$(controllerTimes "$RUNS" set "${LINE1}DirectoryNumber=5550100" | stats)
setCli=$(cliTimes "$RUNS" set "${LINE1}DirectoryNumber" 5550101 | stats)

# Value changes: the number changed in the voice module (through the library, as another of its
# clients) and the change pushed; then the time until the controller's notification, and, for
# another change, until a get of the command-line client (which has no subscriptions) reads the
# new number.  The two are measured apart: every request the agent serves postpones its next
# poll (see the notes below the table).  Pushes at random points of the poll period.
timeout 120 node "$CONTROLLER" --port "$BROKER_PORT" --agent "$AGENT_ID" --timeout 60 \
  subscribe "${LINE1}DirectoryNumber" "$CHANGES" >"$WORK/notifications.txt" 2>&1 &
subscriber=$!
waitFor 20 grep -q '^subscribed$' "$WORK/notifications.txt" || fail "no subscription: $(cat "$WORK/notifications.txt")"
: >"$WORK/notify-delays.txt"
: >"$WORK/cli-delays.txt"
change() {  # NUMBER: sets the number in the voice module and pushes its change; sets `pushed`
  sleep "0.$((RANDOM % 10))"
  timeout 60 "$CTL" --no-emulate --kind 2 set "${LINE1}DirectoryNumber" "$1" >/dev/null 2>&1
  pushed=$(date +%s%N)
  console inbound 7 1 16584 1 >/dev/null
}
for n in $(seq "$CHANGES"); do
  change "55502$n"
  waitFor 10 grep -q "DirectoryNumber => 55502$n at " "$WORK/notifications.txt" || fail "no notification of 55502$n"
  at=$(sed -n "s/.*DirectoryNumber => 55502$n at \([0-9]*\)$/\1/p" "$WORK/notifications.txt")
  echo "$at - $pushed / 1000000" | bc -l >>"$WORK/notify-delays.txt"
done
wait "$subscriber"
for n in $(seq "$CHANGES"); do
  change "55503$n"
  until cli get "${LINE1}DirectoryNumber" | grep -q "=> 55503$n$"; do :; done
  ms "$pushed" >>"$WORK/cli-delays.txt"
done
notifyController=$(stats <"$WORK/notify-delays.txt")
notifyCli=$(stats <"$WORK/cli-delays.txt")

{
  echo "$HEADING"
  echo
  echo "Measured by \`bash bench/usp-controller.sh\` on $(date -u '+%Y-%m-%d %H:%M UTC') (commit" \
       "$(git -C "$ROOT" rev-parse --short HEAD 2>/dev/null || echo unknown)), load average $(cut -d' ' -f1-3 /proc/loadavg)."
  echo "One broker, one agent (plug-in, value-change poll every ${AGENT_POLL_PERIOD} s) and one emulator for both columns."
  echo "The controller's time is one message's round trip on an open connection (the script's own"
  echo "measure, protobuf encoding and decoding included); the client's is one \`obuspa -c\` process"
  echo "from start to exit (its Unix-socket connection included)."
  echo
  echo "| operation | controller p50 ms | controller max ms | client p50 ms | client max ms |"
  echo "|---|---:|---:|---:|---:|"
  echo "| Get of \`$TREE\` ($treeValues values; the client $cliValues), $TREE_RUNS runs | $treeController | $treeCli |"
  echo "| Get of \`CallControl.Line.1.DirectoryNumber\`, $RUNS runs | $getController | $getCli |"
  echo "| Set of \`CallControl.Line.1.DirectoryNumber\`, $RUNS runs | $setController | $setCli |"
  echo "| change pushed by the voice module to ValueChange notification (controller) / to a client get reading it, $CHANGES changes | $notifyController | $notifyCli |"
  echo
  echo "The notification waits for the agent's next poll of the subscribed parameter (every"
  echo "${AGENT_POLL_PERIOD} s; 15 s with the agent's default): the vendor layer has no call that reports a change."
  echo "The agent counts its timers in whole seconds and waits a whole period again after each request"
  echo "it serves, so requests arriving more often than once a period postpone the poll (a get issued"
  echo "right after a push made the notification come 1.1 s after it, not within the second)."
  echo "The client has no subscriptions; every get asks the voice module, so one issued after the"
  echo "push reads the new number."
  echo
} >"$OUT"
