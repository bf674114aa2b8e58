#!/usr/bin/env bash
# The voice data model served by a USP agent: builds the agent from its source (once, into the
# build folder), builds libtr104-usp.so, starts the emulator and the agent with the plug-in in a
# private IPC namespace, and checks through the agent's own command-line client:
#   - the issue-2 tree (Device.Services.VoiceService.) is served, the issue-1 standard tree is not;
#   - a get of the whole issue-2 tree (and of the vendor parameters) equals `tr104ctl dump` of the
#     same voice module, value by value;
#   - sets reach the voice module with the right bytes (the emulator's request log) and read back
#     at once: a Set's incomplete groups are applied when the agent commits it;
#   - a read-only parameter and a value outside its enumeration are refused, naming the
#     parameter, and nothing is sent;
#   - POTS.FXS.{i}.DiagTests() runs to completion while the agent answers other requests;
#   - values the voice module changes show in the next get; its notifications reach the plug-in;
#   - a voice module that does not answer gives errors and the agent keeps running;
#   - the agent stops on SIGTERM to its process id, a test still running cancelled.
# Prints "N passed, M failed"; exits non-zero when M > 0.
#
#   scripts/usp-agent-check.sh [BUILD_DIR]     (default build/host; the host preset must exist)
set -uo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if [ "${1:-}" != "--inside" ]; then
  BUILD=$(cd "${1:-$ROOT/build/host}" 2>/dev/null && pwd)
  [ -n "$BUILD" ] || { echo "usp-agent-check: no build folder ${1:-$ROOT/build/host}"; echo "0 passed, 1 failed"; exit 1; }
  . "$ROOT/scripts/usp-agent-common.sh"
  buildAgentAndPlugin || giveUp usp-agent-check "the agent or the plug-in did not build"
  exec unshare --ipc bash "${BASH_SOURCE[0]}" --inside "$BUILD"
fi
BUILD=$2
WORK=$(mktemp -d)
. "$ROOT/scripts/usp-agent-common.sh"
cleanup() {
  stopAgentAndEmulator
  [ -z "${KEEP_WORK:-}" ] && rm -rf "$WORK"
}
trap cleanup EXIT

startEmulator
startAgent
VS=Device.Services.VoiceService.1
CLIENT=$VS.SIP.Client NETWORK=$VS.SIP.Network.1 LINE=$VS.CallControl.Line FXS=$VS.POTS.FXS
out=$(cli get "$CLIENT.1.Enable")
check "the plug-in serves the issue-2 tree ($CLIENT.1.Enable)" "$(grep -q '=> ' <<<"$out"; echo $?)" "$out"
out=$(cli instances "$CLIENT."; cli instances "$FXS.")
check "clients and phone ports 1 and 2 announced" \
  "$(grep -q 'Client.2$' <<<"$out" && grep -q 'FXS.2$' <<<"$out"; echo $?)" "$out"
out=$(cli get "$VS.VoiceProfile.1.Line.1.Enable")
check "the issue-1 standard tree is not in the agent" "$(grep -q 'does not exist' <<<"$out"; echo $?)" "$out"

# The whole issue-2 tree and the vendor parameters through the agent, against the client's dump
# of the same voice module (issue-1 paths of the vendor parameters under "Device.").
t0=$(now)
cli get "Device.Services.VoiceService." >"$WORK/agent.txt"
tree=$(since "$t0")
for object in Device.X_QRV_VOIP_IPPARAMS. Device.X_QRV_VOIP_TIME.; do cli get "$object" >>"$WORK/agent.txt"; done
t0=$(now)
timeout 120 "$CTL" --no-emulate --kind 2 dump Device.Services.VoiceService. >"$WORK/dump.txt" 2>&1
dumped=$(since "$t0")
timeout 120 "$CTL" --no-emulate --kind 2 dump InternetGatewayDevice. 2>&1 | grep '\.X_' >>"$WORK/dump.txt"
sed -n 's/^\(InternetGateway\)\{0,1\}Device\.\(.*\) = \(.*\)$/Device.\2 => \3/p' "$WORK/dump.txt" | sort >"$WORK/expected.txt"
# Values that move by themselves (the clock) are left out of the comparison.
grep -v -e 'X_QRV_VOIP_TIME.CurrentLocalTime' "$WORK/expected.txt" >"$WORK/compared.txt"
grep ' => ' "$WORK/agent.txt" | grep -v -e 'X_QRV_VOIP_TIME.CurrentLocalTime' | sort >"$WORK/served.txt"
# Every value the dump read is the agent's, and the agent shows no more in the issue-2 tree (the
# other protocol's parameters are errors in both); among the vendor parameters it shows the
# write-only ones, which the dump leaves out.
missing=$(comm -23 "$WORK/compared.txt" "$WORK/served.txt")
echo "     get of Device.Services.VoiceService.: $(grep -c "^Device.Services.VoiceService" "$WORK/served.txt") values" \
     "in $tree s ($(grep '^Device.Services.VoiceService' "$WORK/served.txt" | grep -vc '\.X_') of the issue-2 tree);" \
     "tr104ctl dump of it: $(grep -c '^Device.Services' "$WORK/compared.txt") in $dumped s;" \
     "$(comm -13 "$WORK/compared.txt" "$WORK/served.txt" | wc -l) more through the agent (write-only)"
check "every value of tr104ctl dump is the agent's ($(wc -l <"$WORK/compared.txt") compared)" \
  "$([ -s "$WORK/compared.txt" ] && [ -z "$missing" ]; echo $?)" "$(head -6 <<<"$missing")"
extra=$(comm -13 "$WORK/compared.txt" "$WORK/served.txt" | grep -v '\.X_')
check "the issue-2 tree through the agent is the dump's, no more" "$([ -z "$extra" ]; echo $?)" "$(head -6 <<<"$extra")"
out=$(cli get "$VS.VoIPProfile.1.RTP.LocalPortMin")
check "a parameter of H.248's handlers is an error while the voice module speaks SIP" \
  "$(grep -q 'LocalPortMin: answered under H.248 only (the voice module speaks SIP)' <<<"$out"; echo $?)" "$out"
errors=$(grep -c 'returned -' "$WORK/agent.txt")
check "failed parameters are named with the handler's result ($errors), the rest still read" \
  "$([ "$errors" -eq 0 ] || grep -q ': Tr104[A-Za-z0-9]* returned -[0-9]*' "$WORK/agent.txt"; echo $?)"

# Sets reach the voice module with the right bytes.
out=$(cli set Device.X_QRV_VOIP_IPPARAMS.DNSServer1 10.1.2.3)
id=$(commandId)
log=$(console requests "${id:-0}" 8)
check "DNSServer1 10.1.2.3 sent as the address word" "$(grep -q "payload.* 0a 01 02 03" <<<"$log"; echo $?)" "$out $log"
out=$(cli set "$LINE.2.DirectoryNumber" 5551234)
id=$(commandId)
log=$(console requests "${id:-0}" 2048)
check "CallControl.Line.2.DirectoryNumber sent as its text" "$(grep -q "$(textBytes 5551234)" <<<"$out$log"; echo $?)" "$out"
out=$(cli get "$LINE.2.DirectoryNumber")
check "the number reads back" "$(grep -q '=> 5551234$' <<<"$out"; echo $?)" "$out"

# A grouped parameter alone: its group is completed from the voice module and written when the
# agent commits the Set, not 5 s later; a Get right after reads it.
before=$(grep -c 'SET_PROXY_CFG_ID' "$WORK/vmemu.log")
t0=$(now)
out=$(cli set "$NETWORK.ProxyServerPort" 5070; cli get "$NETWORK.ProxyServerPort")
took=$(since "$t0")
id=$(commandId SET_PROXY_CFG_ID)
log=$(console requests "${id:-0}" 2048)
check "a proxy port set alone is written as one proxy write at the commit, read back at once ($took s)" \
  "$([ "$(grep -c 'SET_PROXY_CFG_ID' "$WORK/vmemu.log")" -eq $((before + 1)) ] && grep -q "$(wordBytes 5070)" <<<"$log" &&
     grep -q 'ProxyServerPort => 5070$' <<<"$out"; echo $?)" "$out $log"
# One message, both lines: each line's credentials group written at its commit.
before=$(grep -c 'SET_USER_AUTHOR' "$WORK/vmemu.log")
out=$(cli set "$CLIENT.*.AuthUserName" alice)
got=$(cli get "$CLIENT.*.AuthUserName")
check "a Set of both clients' AuthUserName writes both lines' credentials at its commit" \
  "$([ "$(grep -c 'SET_USER_AUTHOR' "$WORK/vmemu.log")" -eq $((before + 2)) ] &&
     [ "$(grep -c 'AuthUserName => alice$' <<<"$got")" -eq 2 ]; echo $?)" "$out $got"

# Refused values: an error naming the parameter, nothing sent.
before=$(requestCount)
out=$(cli set "$CLIENT.1.Status" Up)
check "a read-only parameter refused, naming it, nothing sent" \
  "$(grep -qi 'read.only' <<<"$out" && grep -q "Client.1.Status" <<<"$out" && [ "$(requestCount)" -eq "$before" ]; echo $?)" "$out"
out=$(cli set "$VS.VoIPProfile.1.DTMFMethod" Smoke)
check "a value outside the enumeration refused, naming the parameter, nothing sent" \
  "$(grep -q "VoIPProfile.1.DTMFMethod" <<<"$out" && ! grep -q '=> Smoke' <<<"$out" && [ "$(requestCount)" -eq "$before" ]; echo $?)" "$out"

# DiagTests(): an asynchronous operation.  The agent answers a Get while the test runs; the
# operation's request entry goes when the plug-in signals its completion.
console linetest duration 2000 >/dev/null
t0=$(now)
started=$(cli operate "$FXS.1.DiagTests(TestSelector=REN)")
request=$(sed -n 's/^\(Device.LocalAgent.Request.[0-9]*\) created.*/\1/p' <<<"$started")
t1=$(now)
during=$(cli get "$CLIENT.1.Enable"; cli get "${request:-none}.Status")
getTook=$(since "$t1")
waitFor 15 bash -c "! $OBUSPA -s $SOCK -c get ${request:-none}.Status 2>&1 | grep -q '=>'"
total=$(since "$t0")
done=$(grep 'DiagTests(REN) done' "$WORK/agent.log")
echo "     operate $FXS.1.DiagTests(TestSelector=REN):"
sed 's/^/       /' <<<"$started"
echo "       during the test ($getTook s for both gets):"
sed 's/^/         /' <<<"$during"
echo "       completed after $total s: ${done#*libtr104-usp: }"
check "DiagTests() runs on its own thread: the agent answers during the test" \
  "$(grep -q "$CLIENT.1.Enable => " <<<"$during" && grep -q 'Status => Active' <<<"$during"; echo $?)" "$during"
check "DiagTests() completes with Status Complete and TestResult Success" \
  "$(grep -q 'Status Complete, TestResult Success' <<<"$done"; echo $?)" "$done"
console linetest duration 200 >/dev/null
console linetest conclusion 2 7 >/dev/null
cli operate "$FXS.2.DiagTests(TestSelector=Off-hook)" >/dev/null
waitFor 10 grep -q 'FXS.2.DiagTests(Off-hook) done' "$WORK/agent.log"
done=$(grep 'FXS.2.DiagTests(Off-hook) done' "$WORK/agent.log")
check "an off-hook phone fails the Off-hook test" "$(grep -q 'TestResult Failure' <<<"$done"; echo $?)" "$done"
out=$(cli operate "$FXS.1.DiagTests(TestSelector=Ground)")
check "an unknown TestSelector refused" "$(grep -qi 'error\|not one of' <<<"$out" && ! grep -q created <<<"$out"; echo $?)" "$out"

# The voice module changes values on its own.
console net ip 10.9.8.7 255.255.0.0 10.9.0.1 >/dev/null
out=$(cli get Device.X_QRV_VOIP_IPPARAMS.ExternalIPAddress)
check "an address the network gave shows in the next get" "$(grep -q '=> 10.9.8.7$' <<<"$out"; echo $?)" "$out"
console inbound 7 1 16584 1 >/dev/null
waitFor 5 grep -q "changed $LINE.1.DirectoryNumber" "$WORK/agent.log"
check "the voice module's change notification reaches the plug-in" \
  "$(grep -q "changed $LINE.1.DirectoryNumber" "$WORK/agent.log"; echo $?)" "$(grep "voice module changed" "$WORK/agent.log" | tail -2)"
echo "     $(grep -m1 "voice module changed" "$WORK/agent.log" | sed "s/.*voice module/voice module/")"

# A silent voice module: errors for its parameters, the agent keeps running.
console fault 0 silent >/dev/null
out=$(cli get "$CLIENT.1.Enable")
check "a silent voice module gives the parameter's error" "$(grep -q 'Client.1.Enable: Tr104[A-Za-z]* returned -1' <<<"$out"; echo $?)" "$out"
out=$(cli get Device.LocalAgent.EndpointID)
check "the agent keeps running" "$(kill -0 "$AGENT" && grep -q '=>' <<<"$out"; echo $?)" "$out"
console clear >/dev/null
out=$(cli get "$CLIENT.1.Enable")
check "answers again once the voice module does" "$(grep -q '=> ' <<<"$out"; echo $?)" "$out"

# Stopped by its process id while a test runs: the test ends as cancelled.
console linetest duration 60000 >/dev/null
cli operate "$FXS.1.DiagTests(TestSelector=REN)" >/dev/null
t0=$(now)
stopProcess "$AGENT" 5
check "the agent stops on SIGTERM during a test ($(since "$t0") s), the test cancelled" \
  "$(! kill -0 "$AGENT" 2>/dev/null && grep -q 'DiagTests(REN) done: Status Canceled' "$WORK/agent.log"; echo $?)" \
  "$(tail -3 "$WORK/agent.log")"
AGENT=""

checkSummary
