#!/usr/bin/env bash
# The long-running client keeps its memory flat: `tr104ctl watch` runs for SECONDS while the
# voice module (tr104-vmemu) pushes a changed directory number every 20 ms; the resident set
# size sampled after the first quarter of the run and at its end may differ by at most 512 kB.
#
# usage: watch_rss_test.sh <tr104ctl> <tr104-vmemu> [SECONDS]
set -uo pipefail
if [ -z "${TR104_PRIVATE_IPC:-}" ]; then
  exec unshare --ipc env TR104_PRIVATE_IPC=1 bash "$0" "$@"
fi
ctl=$1 vmemu=$2 seconds=${3:-30}
work=$(mktemp -d)
trap 'kill $vm $watcher 2>/dev/null; rm -rf "$work"' EXIT
mkfifo "$work/console"
"$vmemu" --quiet < "$work/console" > "$work/vmemu.log" 2>&1 & vm=$!
exec 3> "$work/console"
"$ctl" watch --seconds "$seconds" > "$work/watch.log" 2>&1 & watcher=$!
rss() { awk '/^VmRSS/ {print $2}' "/proc/$watcher/status" 2>/dev/null; }
echo "inbound 7 1 3 0 4" >&3   # the voice module runs SIP: changes are reported
start=$SECONDS baseline="" last="" i=0
while kill -0 "$watcher" 2>/dev/null; do
  # A new directory number for line 1 or 2: "1000" .. "1009" as the payload's third word.
  echo "inbound 7 1 16584 $((i % 2 + 1)) 0 $((0x30303031 + (i % 10) * 0x1000000))" >&3
  i=$((i + 1))
  now=$(rss); [ -n "$now" ] && last=$now
  if [ -z "$baseline" ] && ((SECONDS - start >= seconds / 4)); then baseline=$last; fi
  sleep 0.02
done
wait "$watcher"; status=$?
notes=$(grep -c '^notify' "$work/watch.log")
echo "watch ran ${seconds} s, $i changes pushed, $notes notifications; RSS ${baseline:-?} kB after a quarter, ${last:-?} kB at the end"
if ((status != 0)) || [ -z "$baseline" ] || ((notes < i / 4)); then
  echo "FAILED: watch exited $status or received too few notifications"; tail -5 "$work/watch.log"; exit 1
fi
if ((last - baseline > 512)); then
  echo "FAILED: resident memory grew by $((last - baseline)) kB"; exit 1
fi
