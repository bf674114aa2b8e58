#!/usr/bin/env bash
# The voice data model served by a USP agent: builds the agent from its source (once, into the
# build folder), builds libtr104-usp.so, starts the emulator and the agent with the plug-in in a
# private IPC namespace, and checks through the agent's own command-line client:
#   - a get of every served parameter equals `tr104ctl dump` of the same voice module;
#   - sets reach the voice module with the right bytes (the emulator's request log);
#   - a read-only parameter is refused and nothing is sent;
#   - a proxy address and its port are applied as one configuration write;
#   - values the voice module changes show in the next get; its notifications reach the plug-in;
#   - a voice module that does not answer gives errors and the agent keeps running;
#   - the agent stops on SIGTERM to its process id, applying a grouped value still waiting.
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
LINE=Device.Services.VoiceService.1.VoiceProfile.1.Line
PROFILE=Device.Services.VoiceService.1.VoiceProfile.1
out=$(cli get "$LINE.1.Enable")
check "the plug-in serves the voice data model ($LINE.1.Enable)" "$(grep -q '=> ' <<<"$out"; echo $?)" "$out"
out=$(cli instances Device.Services.VoiceService.1.VoiceProfile.1.Line.)
check "lines 1 and 2 announced" "$(grep -q 'Line.2' <<<"$out"; echo $?)" "$out"

# Every served parameter through the agent against the client's dump of the same voice module.
t0=$(date +%s.%N)
cli get Device.Services.VoiceService.1. >"$WORK/agent.txt"
t1=$(date +%s.%N)
for object in Device.X_QRV_VOIP_IPPARAMS. Device.X_QRV_VOIP_TIME.; do cli get "$object" >>"$WORK/agent.txt"; done
timeout 120 "$CTL" --no-emulate --kind 2 dump >"$WORK/dump.txt" 2>&1
sed -n 's/^InternetGatewayDevice\.\(.*\) = \(.*\)$/Device.\1 => \2/p' "$WORK/dump.txt" >"$WORK/expected.txt"
# Values that move by themselves (the clock) are left out of the comparison.
grep -v -e 'X_QRV_VOIP_TIME.CurrentLocalTime' "$WORK/expected.txt" >"$WORK/compared.txt"
missing=$(grep -vxF -f "$WORK/agent.txt" "$WORK/compared.txt")
values=$(grep -c ' => ' "$WORK/agent.txt")
echo "     $values values through the agent, $(wc -l <"$WORK/expected.txt") read by tr104ctl dump;" \
     "get of Device.Services.VoiceService.1. in $(printf '%.2f' "$(echo "$t1 - $t0" | bc)") s"
check "every value of tr104ctl dump is the agent's ($(wc -l <"$WORK/compared.txt") compared)" \
  "$([ -s "$WORK/compared.txt" ] && [ -z "$missing" ]; echo $?)" "$(head -5 <<<"$missing")"
errors=$(grep 'returned -' "$WORK/agent.txt" | sed 's/: Tr104.*//' | sort -u | wc -l)
check "failed parameters are named with the handler's result ($errors), the rest still read" \
  "$([ "$values" -ge "$(wc -l <"$WORK/expected.txt")" ] && grep -q ': Tr104[A-Za-z0-9]* returned -1: ' "$WORK/agent.txt"; echo $?)"

# Sets reach the voice module with the right bytes.
out=$(cli set Device.X_QRV_VOIP_IPPARAMS.DNSServer1 10.1.2.3)
id=$(commandId)
log=$(console requests "${id:-0}" 8)
check "DNSServer1 10.1.2.3 sent as the address word" "$(grep -q "payload.* 0a 01 02 03" <<<"$log"; echo $?)" "$out $log"
out=$(cli set "$LINE.2.DirectoryNumber" 5551234)
id=$(commandId)
log=$(console requests "${id:-0}" 2048)
check "Line 2 DirectoryNumber sent as its text" "$(grep -q "$(textBytes 5551234)" <<<"$log"; echo $?)" "$out"
out=$(cli get "$LINE.2.DirectoryNumber")
check "the number reads back" "$(grep -q '=> 5551234$' <<<"$out"; echo $?)" "$out"

# A read-only parameter is refused and nothing is sent.
before=$(requestCount)
out=$(cli set Device.Services.VoiceService.1.Capabilities.MaxLineCount 3)
check "a read-only parameter refused, nothing sent" \
  "$(grep -qi 'read-only' <<<"$out" && [ "$(requestCount)" -eq "$before" ]; echo $?)" "$out"

# A proxy address and its port: one configuration write when the second arrives.
cli set "$PROFILE.SIP.ProxyServer" proxy.example.net >/dev/null
first=$(grep -c 'SET_PROXY_CFG_ID' "$WORK/vmemu.log")
out=$(cli set "$PROFILE.SIP.ProxyServerPort" 5070)
id=$(commandId SET_PROXY_CFG_ID)
log=$(console requests "${id:-0}" 2048)
check "proxy address and port applied as one write" \
  "$([ "$first" -eq 0 ] && grep -q '^requests cmd=[0-9]*: 1$' <<<"$log" && grep -q "$(textBytes proxy.example.net)" <<<"$log" &&
     grep -q "$(wordBytes 5070)" <<<"$log"; echo $?)" "$out $log"
out=$(cli get "$PROFILE.SIP.")
check "proxy address and port read back" \
  "$(grep -q 'ProxyServer => proxy.example.net$' <<<"$out" && grep -q 'ProxyServerPort => 5070$' <<<"$out"; echo $?)"

# The voice module changes values on its own.
console net ip 10.9.8.7 255.255.0.0 10.9.0.1 >/dev/null
out=$(cli get Device.X_QRV_VOIP_IPPARAMS.ExternalIPAddress)
check "an address the network gave shows in the next get" "$(grep -q '=> 10.9.8.7$' <<<"$out"; echo $?)" "$out"
console inbound 7 1 16584 1 >/dev/null
for _ in $(seq 50); do grep -q "changed $LINE.1.DirectoryNumber" "$WORK/agent.log" && break; sleep 0.05; done
check "the voice module's change notification reaches the plug-in" \
  "$(grep -q "changed $LINE.1.DirectoryNumber" "$WORK/agent.log"; echo $?)"

# A silent voice module: errors for its parameters, the agent keeps running.
console fault 0 silent >/dev/null
out=$(cli get "$LINE.1.Enable")
check "a silent voice module gives the parameter's error" "$(grep -q 'Line.1.Enable: Tr104LineEnable returned -1' <<<"$out"; echo $?)" "$out"
out=$(cli get Device.LocalAgent.EndpointID)
check "the agent keeps running" "$(kill -0 "$AGENT" && grep -q '=>' <<<"$out"; echo $?)" "$out"
console clear >/dev/null
out=$(cli get "$LINE.1.Enable")
check "answers again once the voice module does" "$(grep -q '=> ' <<<"$out"; echo $?)" "$out"

# Stopped by its process id; a grouped value still waiting is applied on the way out.
cli set "$PROFILE.SIP.RegistrarServerPort" 5080 >/dev/null
before=$(grep -c 'SET_REG' "$WORK/vmemu.log")
kill -TERM "$AGENT"
for _ in $(seq 100); do kill -0 "$AGENT" 2>/dev/null || break; sleep 0.05; done
check "the agent stops on SIGTERM" "$(kill -0 "$AGENT" 2>/dev/null && echo 1 || echo 0)"
id=$(commandId SET_REG)
log=$(console requests "${id:-0}" 2048)
check "a registrar port waiting for its address is applied as the agent stops" \
  "$([ "$before" -eq 0 ] && grep -q "$(wordBytes 5080)" <<<"$log"; echo $?)" "$log"
wait "$AGENT" 2>/dev/null
AGENT=""

checkSummary
