#!/usr/bin/env bash
# The chain on a real SIP network, for a person to watch: a registrar (Kamailio, accounts 1001
# and 1002), tr104-voiced with its SIP user agent (baresip), and the library driven by path
# through tr104ctl as the management agent would, all in a private network and IPC namespace.
# Shows the settings written, the registrar's location table filling, each line's status, a
# call from line 1 to line 2's number with the counters and RTP statistics it leaves, a call to
# a number that does not exist, and what tr104-voiced logged; with the times each step took.
#
#   scripts/demo-real.sh          (also: scripts/demo.sh --real)
set -uo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if [ "${1:-}" != "--inside" ]; then
  cd "$ROOT"
  bash scripts/install-deps.sh
  cmake --preset host >/dev/null
  cmake --build --preset host -j "$(nproc 2>/dev/null || echo 2)" --target tr104 tr104ctl tr104-voiced >/dev/null || exit 1
  exec unshare --net --ipc bash "${BASH_SOURCE[0]}" --inside "$ROOT/build/host"
fi
BUILD=$2
ip link set lo up
WORK=$(mktemp -d)
chmod 755 "$WORK"
. "$ROOT/scripts/voiced-common.sh"
cleanup() {
  for pid in $VOICE $KAM; do kill "$pid" 2>/dev/null; done
  wait 2>/dev/null
  rm -rf "$WORK"
}
trap cleanup EXIT
step() { printf '\n== %s\n' "$*"; }
show() { printf '$ tr104ctl %s\n' "$*"; ctl "$@" | sed 's/^/  /'; }
value() { printf '  %-36s line 1: %-8s line 2: %s\n' "$1" "$(ctl get "$1" --line 1)" "$(ctl get "$1" --line 2)"; }
fail() { echo "demo-real: $*"; exit 1; }

step "the registrar: Kamailio on 127.0.0.1:$SIP_PORT, accounts 1001 and 1002"
startRegistrar || fail "Kamailio did not start: $(tail -3 "$WORK/kamailio.log")"
echo "  running (process $KAM); location table: [$(registered)]"

step "the voice module: tr104-voiced, its SIP user agent on 127.0.0.1:$UA_PORT (line 2 answers by itself)"
startVoiced || fail "tr104-voiced did not start: $(tail -3 "$WORK/voiced.log")"
echo "  running (process $VOICE)"

step "the management agent writes the servers and the lines by path, in one tr104ctl call (one message)"
printf '  %s\n' "$P.SIP.RegistrarServer = 127.0.0.1" "$P.SIP.RegistrarServerPort = $SIP_PORT" \
  "$P.Line.{1,2}.DirectoryNumber = 1001, 1002" "$P.Line.{1,2}.Enable = Enabled" \
  "$P.Line.{1,2}.SIP.AuthUserName = 1001, 1002" "$P.Line.{1,2}.SIP.AuthPassword = (the registrar's)"
t0=$(now)
configureLines
sed 's/^/  /' "$WORK/set-lines.log"
echo "  written in $(since "$t0") s (the groups the library stages are written at the end of the call)"
t1=$(now)
waitFor 15 bothRegistered || fail "the lines did not register: [$(registered)]"
echo "  location table: [$(registered)], $(since "$t1") s after the last write"
show get $P.Line.1.Status
show get $P.Line.2.Status

step "a call from line 1 to 1002 (the simulated call test), held until both ends have RTP statistics"
t0=$(now)
show simcall --port 1 --caller 1002 --timeout 30
echo "  the call took $(since "$t0") s from the start of the test"
for name in Tr104LineOutgoingCallsAttempted Tr104LineOutgoingCallsConnected Tr104LineIncomingCallsReceived \
            Tr104LineIncomingCallsConnected Tr104LineTotalCallsTime Tr104LineSendRtpPackets Tr104LineSendRtpBytes \
            Tr104LineRcvdRtpPackets Tr104LineLostRtpPackets Tr104LineRtpJitter; do
  value "$name"
done

step "a call to a number nobody has registered"
show simcall --port 1 --caller 1999 --timeout 20
value Tr104LineOutgoingCallsFailed

step "what tr104-voiced logged (requests left out)"
grep -v '^\[voiced\] module=' "$WORK/voiced.log" | sed 's/^/  /'

step "stopping tr104-voiced and the registrar by process id"
stopProcess "$VOICE" 15 && VOICE=""
stopProcess "$KAM" 10 && KAM=""
echo "  done"
