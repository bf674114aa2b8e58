#!/usr/bin/env bash
# The voice data model managed by a USP controller through an MQTT broker: the broker
# (mosquitto), the agent with its MQTT transport and the plug-in, the emulator as voice module,
# all in a private network and IPC namespace; the controller is tools/controller/usp-controller.js
# on the usp-js library (installed into the build folder with npm when missing).  Checks:
#   - the controller reads Device.DeviceInfo., then the whole voice tree in one Get, every value
#     equal to `tr104ctl dump` of the same voice module;
#   - a Set of several parameters in one message reaches the voice module as the writes the
#     deferred buffer makes of them, and a Get right after it reads them back;
#   - a Set of a read-only parameter and one of a value outside its enumeration fail with the
#     USP error for each, naming the parameter, and change nothing;
#   - an Operate of a phone port's diagnostic test completes with its OperationComplete
#     notification, with Status and TestResult;
#   - a ValueChange subscription on a line's directory number: a new number the voice module
#     reports reaches the controller (the delay from the voice module's push is printed);
#   - a voice module that stops answering: errors for its parameters, the agent keeps serving;
#   - everything is stopped by process id and the namespaces leave nothing behind.
# Prints "N passed, M failed"; exits non-zero when M > 0.
#
#   scripts/usp-controller-check.sh [BUILD_DIR]     (default build/host; the host preset must exist)
set -uo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# The paths the check uses, in one place.
VOICE=Device.Services.VoiceService.
VS=${VOICE}1.
CLIENT1=${VS}SIP.Client.1.
NETWORK=${VS}SIP.Network.1.
LINE1=${VS}CallControl.Line.1.
READ_ONLY=${CLIENT1}Status
ENUMERATED=${VS}VoIPProfile.1.DTMFMethod
DIAG_TEST="${VS}POTS.FXS.1.DiagTests()"
if [ "${1:-}" != "--inside" ]; then
  BUILD=$(cd "${1:-$ROOT/build/host}" 2>/dev/null && pwd)
  [ -n "$BUILD" ] || { echo "usp-controller-check: no build folder ${1:-$ROOT/build/host}"; echo "0 passed, 1 failed"; exit 1; }
  . "$ROOT/scripts/usp-agent-common.sh"
  for need in mosquitto:mosquitto node:nodejs npm:npm; do
    command -v "${need%%:*}" >/dev/null || PATH=$PATH:/usr/sbin command -v "${need%%:*}" >/dev/null ||
      giveUp usp-controller-check "${need%%:*} not found: install the Debian package ${need#*:} (scripts/install-deps.sh does)"
  done
  buildAgentAndPlugin || giveUp usp-controller-check "the agent or the plug-in did not build"
  installController || giveUp usp-controller-check "npm could not install the controller library (log: $CONTROLLER_DIR/npm.log)"
  # Outside the namespaces: what the host has before, to compare with what it has after.
  queues=$(ipcs -q | grep -c '^0x')
  results=$(mktemp)
  unshare --net --ipc bash "${BASH_SOURCE[0]}" --inside "$BUILD" "$results"
  . "$results"
  rm -f "$results"
  left=""
  for pid in $STARTED; do kill -0 "$pid" 2>/dev/null && left+=" $pid"; done
  check "no process the check started is left (${STARTED// /, })" "$([ -z "$left" ]; echo $?)" "still running:$left"
  check "the host's message queues are as before ($queues)" "$([ "$(ipcs -q | grep -c '^0x')" -eq "$queues" ]; echo $?)"
  check "nothing listens on the broker's port on the host ($BROKER_PORT)" \
    "$(! ss -Htln "sport = :$BROKER_PORT" | grep -q .; echo $?)"
  checkSummary
  exit
fi
BUILD=$2
RESULTS=$3
ip link set lo up
WORK=$(mktemp -d)
. "$ROOT/scripts/usp-agent-common.sh"
SUBSCRIBER="" STARTED=""
cleanup() {
  for pid in $SUBSCRIBER $BROKER; do kill "$pid" 2>/dev/null; done
  stopAgentAndEmulator
  for pid in $SUBSCRIBER $BROKER; do wait "$pid" 2>/dev/null; done
  { echo "passed=$passed failed=$failed"
    echo "STARTED='${STARTED# }' BROKER_PORT=${BROKER_PORT:-0}"; } >"$RESULTS"
  [ -z "${KEEP_WORK:-}" ] && rm -rf "$WORK"
}
trap cleanup EXIT
# The controller's command and the first lines of its answer, for the transcript.
said() { echo "     \$ usp-controller.js $1"; head -"${3:-3}" <<<"$2" | sed 's/^/       /'; }

# The broker on a free port of the namespace's loopback.
startBroker
check "the broker runs (mosquitto on 127.0.0.1:$BROKER_PORT)" "$?" "$(tail -3 "$WORK/broker.log")"
startEmulator
STARTED="$BROKER $EMU"
t0=$(now)
startManagedAgent
rc=$?
STARTED+=" $AGENT"
check "the agent connects to the broker ($(since "$t0") s after its start)" "$rc" "$(tail -5 "$WORK/agent.log")"

# Reads: the agent's own object, then the whole voice tree in one message.
out=$(controller get Device.DeviceInfo.)
check "the controller reads Device.DeviceInfo. ($(grep -c ' => ' <<<"$out") values)" \
  "$(grep -q '^Device.DeviceInfo.ProductClass => ' <<<"$out"; echo $?)" "$out"
said "get Device.DeviceInfo." "$out"
t0=$(now)
controller get "$VOICE" >"$WORK/tree.txt"
took=$(since "$t0")
# The dump of the same tree, and the vendor parameters the agent serves under it by their old
# paths ("Device." in place of "InternetGatewayDevice.").
timeout 120 "$CTL" --no-emulate --kind 2 dump "$VOICE" >"$WORK/dump.txt" 2>&1
timeout 120 "$CTL" --no-emulate --kind 2 dump "InternetGateway$VOICE" 2>&1 | grep '\.X_' >>"$WORK/dump.txt"
sed -n 's/^\(InternetGateway\)\{0,1\}\(Device\..*\) = \(.*\)$/\2 => \3/p' "$WORK/dump.txt" | sort >"$WORK/expected.txt"
grep ' => ' "$WORK/tree.txt" | sort >"$WORK/served.txt"
# Every value the dump read is the controller's; the agent shows more vendor parameters: the
# write-only ones (empty) and the other protocol's, which the dump leaves out.
missing=$(comm -23 "$WORK/expected.txt" "$WORK/served.txt")
extra=$(comm -13 "$WORK/expected.txt" "$WORK/served.txt" | grep -v '\.X_')
check "the whole voice tree in one Get ($(grep -c ' => ' "$WORK/tree.txt") values in $took s): every value of tr104ctl dump ($(wc -l <"$WORK/expected.txt"))" \
  "$([ -s "$WORK/expected.txt" ] && [ -z "$missing" ]; echo $?)" "$(head -5 <<<"$missing")"
check "... and no more outside the vendor parameters" "$([ -z "$extra" ]; echo $?)" "$(head -5 <<<"$extra")"

# One Set message: a proxy address and its port, a line's credentials.  Each pair is one group
# of the deferred buffer: one write each, made while the agent answers the message.
requests=$(requestCount)
out=$(controller set "${NETWORK}ProxyServer=proxy.example.net" "${NETWORK}ProxyServerPort=5070" \
  "${CLIENT1}AuthUserName=user-1" "${CLIENT1}AuthPassword=secret-1")
check "a Set of four parameters in one message is accepted" "$?" "$out"
said "set ${NETWORK}ProxyServer=proxy.example.net ...Port=5070 ${CLIENT1}AuthUserName=user-1 ...AuthPassword=secret-1" "$out" 4
proxy=$(console requests "$(commandId SET_PROXY_CFG_ID)" 2048)
auth=$(console requests 16585 300)
check "the proxy address and port reach the voice module as one write" \
  "$(grep -q '^requests cmd=[0-9]*: 1$' <<<"$proxy" && grep -q "$(textBytes proxy.example.net)" <<<"$proxy" &&
     grep -q "$(wordBytes 5070)" <<<"$proxy"; echo $?)" "$proxy"
check "the user name and password reach the voice module as one write" \
  "$(grep -q '^requests cmd=16585: 1$' <<<"$auth" && grep -q "$(textBytes user-1)" <<<"$auth"; echo $?)" "$auth"
out=$(controller get "${NETWORK}ProxyServer" "${NETWORK}ProxyServerPort" "${CLIENT1}AuthUserName")
check "a Get right after reads them back" \
  "$(grep -q 'ProxyServer => proxy.example.net$' <<<"$out" && grep -q 'ProxyServerPort => 5070$' <<<"$out" &&
     grep -q 'AuthUserName => user-1$' <<<"$out"; echo $?)" "$out"
# Half a group: the user name alone is completed with the password the voice module holds and
# written when the agent commits the message.
controller set "${CLIENT1}AuthUserName=user-2" >/dev/null
out=$(controller get "${CLIENT1}AuthUserName")
auth=$(console requests 16585 300)
check "a user name set alone is written at the commit and reads back at once" \
  "$(grep -q 'AuthUserName => user-2$' <<<"$out" && grep -q '^requests cmd=16585: 2$' <<<"$auth" &&
     grep -q "$(textBytes user-2)" <<<"$auth"; echo $?)" "$out $auth"

# Refused values: the error names the parameter; the message's other value is not applied either.
before=$(controller get "$VOICE")
out=$(controller set "$READ_ONLY=Up" "${NETWORK}ProxyServerPort=5099")
check "a read-only parameter: error 7013 naming it" "$(grep -q "^error 7013 $READ_ONLY: " <<<"$out"; echo $?)" "$out"
said "set $READ_ONLY=Up ${NETWORK}ProxyServerPort=5099" "$out"
out=$(controller set "$ENUMERATED=Smoke" "${NETWORK}ProxyServerPort=5099")
check "a value outside the enumeration: error 7012 naming the parameter" \
  "$(grep -q "^error 7012 $ENUMERATED: " <<<"$out"; echo $?)" "$out"
said "set $ENUMERATED=Smoke ${NETWORK}ProxyServerPort=5099" "$out"
after=$(controller get "$VOICE")
check "the rest of the tree is untouched ($(wc -l <<<"$after") values compared)" \
  "$([ "$before" = "$after" ]; echo $?)" "$(diff <(echo "$before") <(echo "$after") | head -5)"

# A diagnostic test of a phone port, asynchronous: its completion is a notification.
console linetest duration 1000 >/dev/null
t0=$(now)
out=$(controller operate "$DIAG_TEST" TestSelector=REN)
check "Operate of $DIAG_TEST with TestSelector REN: OperationComplete after $(since "$t0") s, Status Complete, TestResult Success" \
  "$(grep -q '^Status => Complete$' <<<"$out" && grep -q '^TestResult => Success$' <<<"$out"; echo $?)" "$out"
said "operate '$DIAG_TEST' TestSelector=REN" "$out"

# A ValueChange subscription: the voice module takes a new number and says so.
controller --timeout 20 subscribe "${LINE1}DirectoryNumber" >"$WORK/subscriber.txt" 2>&1 &
SUBSCRIBER=$!
waitFor 20 grep -q '^subscribed$' "$WORK/subscriber.txt"
timeout 60 "$CTL" --no-emulate --kind 2 set "${LINE1}DirectoryNumber" 5550101 >/dev/null 2>&1
pushed=$(date +%s%3N)
console inbound 7 1 16584 1 >/dev/null
wait "$SUBSCRIBER"
SUBSCRIBER=""
at=$(sed -n "s/^${LINE1//./\\.}DirectoryNumber => 5550101 at \([0-9]*\)$/\1/p" "$WORK/subscriber.txt")
# The agent polls subscribed parameters every second: well within 5 s even on a busy machine
# (15 s with the agent's default period).
check "the ValueChange notification of the new number reaches the controller (${at:+$((at - pushed)) ms after the push})" \
  "$([ -n "$at" ] && [ $((at - pushed)) -lt 5000 ]; echo $?)" "$(cat "$WORK/subscriber.txt")"
said "subscribe ${LINE1}DirectoryNumber" "$(cat "$WORK/subscriber.txt")"
check "the voice module's change notification reaches the plug-in" \
  "$(grep -q "changed .*Line.1.DirectoryNumber" "$WORK/agent.log"; echo $?)"

# A voice module that stops answering.
console fault 0 silent >/dev/null
out=$(controller get "${CLIENT1}Enable")
check "a silent voice module: the controller gets an error for the parameter (the agent leaves it out)" \
  "$(grep -q "^error ${CLIENT1}Enable: no value" <<<"$out"; echo $?)" "$out"
said "get ${CLIENT1}Enable" "$out"
out=$(controller get Device.DeviceInfo.ProductClass)
check "the agent stays up and serves Device.DeviceInfo." "$(kill -0 "$AGENT" && grep -q ' => ' <<<"$out"; echo $?)" "$out"
console clear >/dev/null

# Stopped by process id.
for stop in agent:AGENT broker:BROKER emulator:EMU; do
  name=${stop#*:}
  pid=${!name}
  stopProcess "$pid" 10
  check "the ${stop%:*} stops on SIGTERM" "$(! kill -0 "$pid" 2>/dev/null; echo $?)"
  printf -v "$name" ''
done
