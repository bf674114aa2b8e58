#!/usr/bin/env bash
# tr104-voiced against a real registrar: Kamailio with two accounts, tr104-voiced with its SIP
# user agent, the library driven by path through tr104ctl and the USP agent, all in a private
# network and IPC namespace.  Checks:
#   - servers, numbers and credentials written through the library register both lines: the
#     registrar's location table lists them and each line's status reads Up;
#   - a simulated call from line 1 to line 2's number succeeds and moves both lines' counters
#     and RTP statistics; one to a number that does not exist fails after dialling;
#   - a wrong password: that line's status reads Error, the registrar lists only the other, and
#     the line's simulated call test fails for want of a dial tone;
#   - a line disabled through the USP agent disappears from the location table;
#   - passwords stay out of the log, the user agent's folder is private and removed at exit;
#     the registrar and tr104-voiced stop by process id.
# Prints "N passed, M failed"; exits non-zero when M > 0.  A missing registrar or user agent
# is a failure, with the package to install.
#
#   scripts/voiced-check.sh [BUILD_DIR]     (default build/host; the host preset must exist)
set -uo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if [ "${1:-}" != "--inside" ]; then
  BUILD=$(cd "${1:-$ROOT/build/host}" 2>/dev/null && pwd)
  [ -n "$BUILD" ] || { echo "voiced-check: no build folder ${1:-$ROOT/build/host}"; echo "0 passed, 1 failed"; exit 1; }
  for need in kamailio:kamailio kamcmd:kamailio baresip:baresip-core; do
    if ! command -v "${need%%:*}" >/dev/null; then
      echo "voiced-check: ${need%%:*} not found: install the Debian package ${need#*:} (scripts/install-deps.sh does)"
      echo "0 passed, 1 failed"
      exit 1
    fi
  done
  targets=(tr104-voiced tr104ctl tr104)
  [ -x "$BUILD/obuspa/prefix/bin/obuspa" ] && targets+=(tr104-usp)
  (cd "$ROOT" && cmake --build "$BUILD" -j2 --target "${targets[@]}") >"$BUILD/voiced-check-build.log" 2>&1 ||
    { tail -20 "$BUILD/voiced-check-build.log"; echo "0 passed, 1 failed"; exit 1; }
  exec unshare --net --ipc bash "${BASH_SOURCE[0]}" --inside "$BUILD"
fi
BUILD=$2
ip link set lo up
WORK=$(mktemp -d)
chmod 755 "$WORK"
. "$ROOT/scripts/voiced-common.sh"
. "$ROOT/scripts/usp-agent-common.sh"  # the USP agent: startAgent, cli
cleanup() {
  for pid in $AGENT $VOICE $KAM; do kill "$pid" 2>/dev/null; done
  wait 2>/dev/null
  [ -z "${KEEP_WORK:-}" ] && rm -rf "$WORK"
}
trap cleanup EXIT

startRegistrar; rc=$?
check "the registrar runs (Kamailio on 127.0.0.1:$SIP_PORT)" "$rc" "$(tail -3 "$WORK/kamailio.log")"

# A user agent that cannot be found is a clear error.
out=$("$VOICED" --baresip "$WORK/no-such-baresip" 2>&1); rc=$?
check "without baresip: exit 1 and the package to install" "$([ $rc -eq 1 ] && grep -q 'baresip-core' <<<"$out"; echo $?)" "$out"

# The voice module.
t0=$(now)
startVoiced; rc=$?
check "tr104-voiced serves the channel with its user agent (ready in $(since "$t0") s)" "$rc" \
  "$(tail -3 "$WORK/voiced.log")"
folder=$(find "$WORK/tmp" -maxdepth 1 -name 'tr104-voiced.*' | head -1)
check "the user agent's folder is private (0700), its account file 0600 and empty" \
  "$([ -n "$folder" ] && [ "$(stat -c %a "$folder")" = 700 ] && [ "$(stat -c %a "$folder/accounts")" = 600 ] &&
     [ ! -s "$folder/accounts" ]; echo $?)" "$(ls -la "$folder" 2>&1 | head -5)"

# Servers, numbers and credentials by path.
t0=$(now)
configureLines >/dev/null
written=$(since "$t0")
t1=$(now)
waitFor 15 bothRegistered
check "both lines in the registrar's location table ($written s to write, registered $(since "$t1") s later)" \
  "$(registeredAre "1001 1002 "; echo $?)" "location table: $(registered)"
check "each line's status reads Up" "$(statusIs 1 Up && statusIs 2 Up; echo $?)" \
  "$(ctl get Tr104LineRegStatus --line 1) / $(ctl get Tr104LineRegStatus --line 2)"
out=$(ctl get Tr104ActiveSipProxyServer)
check "the proxy in use reads as the registrar the lines use" "$([ "$out" = 127.0.0.1 ]; echo $?)" "$out"
check "the user agent registers the records' values (registrar, number, user name)" \
  "$(grep -q 'line 1: registering <sip:1001@127.0.0.1:5060>;auth_user=1001;auth_pass=\*\*\*' "$WORK/voiced.log"; echo $?)" \
  "$(grep 'registering' "$WORK/voiced.log" | tail -2)"

# A call from line 1 to line 2's number (line 2 answers by itself), as the simulated call test.
t0=$(now)
out=$(ctl simcall --port 1 --caller 1002 --timeout 30)
call=$(since "$t0")
check "simulated call line 1 -> 1002 ends in success ($call s)" \
  "$(grep -q 'conclusion *Success' <<<"$out" && grep -q 'Connected' <<<"$out"; echo $?)" "$out"
value() { ctl get "$1" --line "$2"; }
out1="$(value Tr104LineOutgoingCallsAttempted 1) $(value Tr104LineOutgoingCallsConnected 1) $(value Tr104LineIncomingCallsReceived 1)"
out2="$(value Tr104LineIncomingCallsReceived 2) $(value Tr104LineIncomingCallsConnected 2) $(value Tr104LineOutgoingCallsAttempted 2)"
check "line counters: line 1 one outgoing call connected, line 2 one incoming call connected" \
  "$([ "$out1" = "1 1 0" ] && [ "$out2" = "1 1 0" ]; echo $?)" "line 1 (attempted connected in): $out1; line 2 (in connected out): $out2"
time1=$(value Tr104LineTotalCallsTime 1)
time2=$(value Tr104LineTotalCallsTime 2)
check "call time counted on both lines ($time1 s, $time2 s)" "$([ "$time1" -ge 1 ] && [ "$time2" -ge 1 ]; echo $?)"
sent1=$(value Tr104LineSendRtpPackets 1) rcvd1=$(value Tr104LineRcvdRtpPackets 1)
sent2=$(value Tr104LineSendRtpPackets 2) rcvd2=$(value Tr104LineRcvdRtpPackets 2)
bytes1=$(value Tr104LineSendRtpBytes 1)
check "RTP statistics of the call: line 1 sent $sent1 received $rcvd1, line 2 sent $sent2 received $rcvd2 packets" \
  "$([ "$sent1" -gt 0 ] && [ "$rcvd1" -gt 0 ] && [ "$sent2" -gt 0 ] && [ "$rcvd2" -gt 0 ] &&
     [ "$bytes1" -eq $((sent1 * 172)) ]; echo $?)" "bytes sent on line 1: $bytes1"
out=$(ctl simcall --port 1 --caller 1999 --timeout 20)
check "simulated call to a number that does not exist: Fail, AfterDialRelease" \
  "$(grep -q 'conclusion *Fail' <<<"$out" && grep -q 'AfterDialRelease' <<<"$out"; echo $?)" "$out"
failed1=$(value Tr104LineOutgoingCallsFailed 1)
check "the failed call is counted on line 1" "$([ "$failed1" = 1 ]; echo $?)" "outgoing calls failed: $failed1"

# A wrong password: the line's status says so, the registrar keeps only the other line.
ctl set $P.Line.2.SIP.AuthPassword wrong-password >/dev/null
waitFor 10 statusIs 2 Error
check "a wrong password: line 2 reads Error" "$(statusIs 2 Error; echo $?)" "$(ctl get Tr104LineRegStatus --line 2)"
check "the reason is in the log" "$(grep -q 'line 2: registration failed: 401 Unauthorized' "$WORK/voiced.log"; echo $?)"
waitFor 5 registeredAre "1001 "
check "the registrar lists only line 1" "$(registeredAre "1001 "; echo $?)" "location table: $(registered)"
out=$(ctl simcall --port 2 --caller 1001 --timeout 10)
check "a simulated call from the unregistered line: Fail, NoDailTone, nothing dialled" \
  "$(grep -q 'fail reason *NoDailTone' <<<"$out" && ! grep -q 'line 2: dialling' "$WORK/voiced.log"; echo $?)" "$out"

# A line disabled through the USP agent leaves the location table.
if [ -x "$OBUSPA" ] && [ -f "$PLUGIN" ]; then
  startAgent
  LINE=Device.Services.VoiceService.1.CallControl.Line
  out=$(cli get $LINE.1.Status)
  check "the USP agent reads line 1's status: Up" "$(grep -q '=> Up$' <<<"$out"; echo $?)" "$out"
  out=$(cli set $LINE.1.Enable false)
  waitFor 10 registeredAre ""
  check "line 1 disabled through the USP agent leaves the location table" "$(registeredAre ""; echo $?)" \
    "$out; location table: $(registered)"
  waitFor 5 bash -c "timeout 10 '$OBUSPA' -s '$SOCK' -c get $LINE.1.Status | grep -q '=> Disabled$'"
  out=$(cli get $LINE.1.Status)
  check "line 1's status reads Disabled" "$(grep -q '=> Disabled$' <<<"$out"; echo $?)" "$out"
  stopProcess "$AGENT" 10
  AGENT=""
else
  check "the USP agent is built (scripts/usp-agent-check.sh builds it)" 1 "no $OBUSPA"
fi

# Passwords never in the log; stopped by its process id, the user agent and its folder go too.
check "no password in tr104-voiced's log" "$(! grep -q -e secret1 -e secret2 -e wrong-password "$WORK/voiced.log"; echo $?)"
baresip=$(sed -n 's/^\[voiced\] baresip \([0-9]*\) .*/\1/p' "$WORK/voiced.log")
t0=$(now)
stopProcess "$VOICE" 15
check "tr104-voiced stops on SIGTERM ($(since "$t0") s), baresip with it, its folder removed" \
  "$(! kill -0 "$VOICE" 2>/dev/null && ! kill -0 "${baresip:-0}" 2>/dev/null && [ ! -e "$folder" ]; echo $?)"
VOICE=""
stopProcess "$KAM" 10
check "the registrar stops on SIGTERM" "$(! kill -0 "$KAM" 2>/dev/null; echo $?)"
KAM=""
[ -n "${VOICED_CHECK_LOG:-}" ] && cp "$WORK/voiced.log" "$VOICED_CHECK_LOG"

checkSummary
