#!/usr/bin/env bash
# The command-line client end to end: against a voice-module emulator running as its own
# process (as a real voice module would), with its built-in emulator, and with bad requests;
# start-up (init), change notifications (watch) and the deferred buffer (set of a server port,
# demo).
#
# usage: tr104ctl_test.sh <tr104ctl> <tr104-vmemu>
# TR104_RUN: program (with arguments) that runs target binaries, e.g. "qemu-mips -L /usr/mips-linux-gnu".
# The script moves into a private IPC namespace first: the emulator's queues never meet the
# machine's.
set -uo pipefail
ctl=$1 vmemu=$2
if [ -z "${TR104CTL_TEST_INNER:-}" ]; then
  exec env TR104CTL_TEST_INNER=1 unshare --ipc bash "$0" "$@"
fi
read -r -a run <<< "${TR104_RUN:-}"
work=$(mktemp -d /tmp/tr104ctl-test.XXXXXX)
failures=0

# run ARGS...: runs tr104ctl; leaves its output (stdout and stderr together) in $out and its
# exit code in $status.
run() {
  out=$("${run[@]}" "$ctl" "$@" 2>&1)
  status=$?
}

# verdict NAME OK WANT_EXIT WHAT: counts and reports one check from $out and $status.
verdict() {
  local name=$1 ok=$2 want=$3 what=$4
  if [ "$status" -ne "$want" ] || [ "$ok" -ne 1 ]; then
    echo "FAIL $name: exit $status (want $want), output:"; sed 's/^/    /' <<< "$out"
    echo "    (wanted to see: $what)"
    failures=$((failures + 1))
  else
    echo "ok   $name"
  fi
}

# check NAME WANT_EXIT PATTERN... -- ARGS...: runs tr104ctl, checks its exit code and that its
# output contains every PATTERN (a fixed string; "" matches anything; "=TEXT" wants the output
# to be exactly TEXT).
check() {
  local name=$1 want=$2
  shift 2
  local patterns=()
  while [ "$1" != "--" ]; do patterns+=("$1"); shift; done
  shift
  run "$@"
  local matched=1 pattern
  for pattern in "${patterns[@]}"; do
    if [ "${pattern:0:1}" = "=" ]; then
      [ "$out" = "${pattern:1}" ] || matched=0
    else
      grep -qF -- "$pattern" <<< "$out" || matched=0
    fi
  done
  verdict "$name" "$matched" "$want" "$(printf '%s | ' "${patterns[@]}")"
}

# check_notify NAME EXPECTED -- ARGS...: runs tr104ctl, wants exit 0 and the notifications it
# printed (lines "notify ...") to be exactly EXPECTED, in that order.
check_notify() {
  local name=$1 expected=$2
  shift 3
  run "$@"
  local matched=1
  [ "$(grep '^notify' <<< "$out")" = "$expected" ] || matched=0
  verdict "$name" "$matched" 0 "$expected"
}

p=InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1

# 1. Built-in emulator, chosen explicitly and because no voice module is running here.
check "emulate: protocol name" 0 "=SIP" -- --emulate get Tr104VoiceProtocolType
check "emulate: other protocol name" 0 "=H.248" -- --emulate --protocol H.248 get Tr104VoiceProtocolType
check "no voice module: emulator by default" 0 "=SIP" -- get Tr104VoiceProtocolType
check "H.248: caller id answered by the wrapper" 0 "=1" -- --protocol H.248 get Tr104LineCallerIdFlag --line 1
check "protocol 0: wrapper refuses" 1 "returned -1" -- --protocol none get Tr104LineEnable --line 1
check "caps: capability table" 0 "Tr104MaxSessionsAllLines       \"2\"" "supported codecs: G.711MuLaw" \
  -- --protocol H.248 caps
check "device: two-argument handler" 0 "=NONE" -- --protocol none get Tr104ProfileSignalingProtocol
check "stats: line and profile tables" 0 "RTP packets sent                 0" "profile (lines 1 and 2)" -- stats --line 2
check "stats: profile value of two arguments" 0 "=101" -- get Tr104TelEvent2833PayloadType
check "stats: line 3" 2 "--line: give a number from 1 to 2, not '3'" -- stats --line 3
check "net: the voice interface" 0 "address, mask, gateway" "time status                                Disabled" -- net
check "net: an address as dotted text" 0 "=192.168.100.2" -- get Tr104IpAddrConfig
check "net: a number table entry" 0 "=(no entry)" -- get Tr104IptParamConfig --line 1
check "net: not an address" 2 "'10.0.0' is not an IPv4 address" -- set Tr104DnsIpConfig1 10.0.0
# Data-model paths through the map.
check "which: a served path as JSON" 0 \
  '={"path":"'"$p"'.Line.2.Enable","handler":"Tr104LineEnable","nLocate":[1,1,2,0],"type":"string","access":"RW"}' \
  -- which --json $p.Line.2.Enable
check "which: a standard parameter not served" 3 '"served":false,"reason":"tones and ring patterns' -- \
  which --json $p.Line.1.Ringer.Event.1.Function
check "which: no such instance" 2 "instance '3' of Line: not 1..2" -- which $p.Line.3.Enable
check "which: trailing dot" 2 "no empty name" -- which $p.Line.1.
check "get by path: a boolean" 0 "=false" -- get $p.Line.1.CallingFeatures.CallerIDEnable
check "set by path: not a boolean" 2 "a boolean is true, false, 1 or 0, not 'yes'" -- \
  set $p.Line.1.CallingFeatures.CallerIDEnable yes
check "set by path: read only" 2 "Stats.PacketsSent: read only" -- set $p.Line.1.Stats.PacketsSent 3
check "get by path: an enumeration" 0 "=Static" -- get InternetGatewayDevice.X_QRV_VOIP_IPPARAMS.AddressingType
check "dump: the tree against the emulator" 0 "$p.Line.2.Stats.PacketsSent = 0" "# " " 0 not read" -- dump
# The second tree: the same handlers, the map's own values (references, counts), its conversions.
d=Device.Services.VoiceService.1
check "which: an issue-2 path as JSON" 0 \
  '={"path":"'"$d"'.SIP.Client.2.AuthUserName","handler":"Tr104LineAuthUserName","nLocate":[1,1,2,0],"type":"string","access":"RW","arg":"nLocate[1]=1"}' \
  -- which --json $d.SIP.Client.2.AuthUserName
check "which: the map's own value" 0 '"handler":"(map)"' '"type":"string","access":"R"' -- \
  which --json $d.CallControl.Line.2.Provider
check "which: an issue-2 parameter not served" 3 '"served":false,"reason":"the device has no DECT base"' -- \
  which --json $d.DECT.Base.1.Name
check "which: no such issue-2 instance" 2 "instance '3' of Client: not 1..2" -- which $d.SIP.Client.3.Enable
check "which: in neither tree" 2 "no such parameter" -- which $d.SIP.Client.1.Nope
check "get by issue-2 path: a reference" 0 "=$d.SIP.Client.2" -- get $d.CallControl.Line.2.Provider
check "which: a features set is its line's" 0 \
  '"handler":"Tr104LineCallWaitingFlag","nLocate":[1,1,2,0],"type":"boolean"' -- \
  which --json $d.CallControl.CallingFeatures.Set.2.CallWaitingEnable
check "get by issue-2 path: an extension's features set" 0 "=$d.CallControl.CallingFeatures.Set.2" -- \
  get $d.CallControl.Extension.2.CallingFeatures
check "get by issue-2 path: an instance count" 0 "=2" -- get $d.CallControl.ExtensionNumberOfEntries
check "get by issue-2 path: a converted boolean" 0 "=false" -- get $d.SIP.Client.1.Enable
check "set by issue-2 path: a reference is read only" 2 "Provider: read only" -- set $d.CallControl.Line.1.Provider x
check "set by issue-2 path: not a boolean" 2 "'maybe' is not one of true, false" -- set $d.SIP.Client.1.Enable maybe
check "dump: the issue-2 tree" 0 "$d.CallControl.Line.2.Provider = $d.SIP.Client.2" "$d.POTS.FXS.2.Name = PORT2" \
  " 0 not read" -- dump $d.
check "codec list entry out of range" 1 "returned -2" -- set Tr104LineCodecListPriority --line 1 --entry 6 -- 1
check "--no-emulate without a voice module" 1 "" -- --no-emulate get Tr104VoiceProtocolType
# The run above left the send queue behind: it exists now, but nobody answers on it.
check "silent queue: emulator takes over" 0 "no voice module answers; the emulator plays it" -- \
  get Tr104VoiceProtocolType
# Every probe leaves a request on that queue; it holds three.  Remove it, so that later runs
# find no voice module at all.
ipcrm -Q 30 2>/dev/null

# Start-up and change notification with the built-in emulator.
check "init: full start-up" 0 "Tr104VoiceCfgInit(1)" "tExcTask running" \
  "20 slots, 20 with a watchdog; a group is applied 5000 ms after its first value" \
  "reading inbound queue key 37" -- init
check "init kind 6: no inbound thread" 0 "module number    11" "none: module kind 6 has no inbound queue" -- \
  init --kind 6
check "init kind 2, then a get" 0 "Tr104VoiceCfgInit(2)" $'\nSIP' -- init --kind 2 get Tr104VoiceProtocolType
check_notify "watch: scripted changes reach the agent" "\
notify [module 28] $p.Line.1.DirectoryNumber = \"5550101\"
notify [module 28] \"\" = \"5550303\"
notify [module 28] $p.SIP.ProxyServer = \"proxy2.example.net\"
notify [module 28] $p.SIP.ProxyServerPort = \"5062\"
notify [module 28] $p.SIP.X_CT-COM_Standby-RegistrarServer = \"10.0.0.2\"
notify [module 28] $p.SIP.X_CT-COM_Standby-RegistrarServerPort = \"5070\"
notify [module 28] $p.Line.2.SIP.AuthUserName = \"alice\"
notify [module 28] $p.Line.2.SIP.AuthPassword = \"\" (hidden)" -- watch --emulate
check "watch: totals" 0 "the agent received 5 notification(s) with 8 value(s)" -- watch --emulate
check "watch under H.248: changes dropped" 0 "protocol type is 2" "the agent received 0 notification(s)" -- \
  --protocol H.248 watch --emulate

# 2. A voice module of its own process: values set by one client run are read by the next.
# Its standard input is a pipe, for the unsolicited messages it pushes.
ready=$work/ready
mkfifo "$work/vmemu.in"
"${run[@]}" "$vmemu" --quiet --ready-file "$ready" <"$work/vmemu.in" >"$work/vmemu.log" 2>&1 &
emu=$!
exec 3>"$work/vmemu.in"
for _ in $(seq 300); do [ -e "$ready" ] && break; sleep 0.1; done
if [ ! -e "$ready" ]; then
  echo "FAIL tr104-vmemu did not start"; cat "$work/vmemu.log"; exit 1
fi
# console COMMAND ANSWER: gives the emulator a console command and waits until its log shows the
# answer one more time than before.
console() {
  local before
  before=$(grep -cF -- "$2" "$work/vmemu.log")
  echo "$1" >&3
  for _ in $(seq 300); do
    (($(grep -cF -- "$2" "$work/vmemu.log") > before)) && return
    sleep 0.1
  done
  echo "FAIL the emulator did not answer '$1'"; failures=$((failures + 1))
}
check "set line enable" 0 "=" -- set Tr104LineEnable --line 1 -- Enabled
check "get line enable" 0 "=Enabled" -- --no-emulate get Tr104LineEnable --line 1
check "set transmit gain (SIP variant by the current protocol)" 0 "" -- set Tr104LineTransmitGain --line 2 -- -5
check "get transmit gain" 0 "=-5" -- get Tr104LineTransmitGain --line 2
check "gain out of range" 1 "returned -1" -- set Tr104LineTransmitGain --line 2 -- -33
check "set start digit timer" 0 "=" -- set Tr104StartDigitTimerSip --line 1 -- 20
check "get dial tone timer" 0 "=20" -- get Tr104DialToneTimerSip --line 1
check "multi-argument gain" 0 "" -- set Tr104LineGainSip --line 1 --direction 1 -- 7
# A port alone is staged; the client stays until the slot's timer has applied it (read, merge,
# write), so that the next run reads it back.
check "deferred set: applied by the timer" 0 "staged in slot 3 of the deferred buffer" \
  "slot 3 applied by its timer after" -- set Tr104SipProxyServerPort -- 5070
check "deferred set read back" 0 "=5070" -- get Tr104SipProxyServerPort
check "deferred set refused before staging" 1 "returned -2" -- set Tr104SipProxyServerPort -- 65536

# Sets by path in pairs are one management message: the proxy's address and port reach the voice
# module as one write, the line's user name and password as another, nothing waits for a timer;
# a get right after reads them back (the password empty: the data model hides it), and the
# voice module's request log shows the password only as stars.  A group left incomplete (a port
# alone) is written at the end of the message, completed from the voice module's values.
# requests CMD: how many requests of that command the emulator has seen.
requests() {
  console "requests $1 452" "requests cmd=$1:"
  grep -F "requests cmd=$1:" "$work/vmemu.log" | tail -1 | awk '{print $3}'
}
served() {
  console "log 0" "requests served"
  grep -F "requests served" "$work/vmemu.log" | tail -1 | awk '{print $1}'
}
proxy_writes=$(requests 16392) auth_writes=$(requests 16585) registrar_writes=$(requests 16389)
check "sets in pairs: one write per group" 0 "ProxyServerPort: set, completing slot 3: its group written at once" \
  "Line.1.SIP.AuthPassword: set, completing slot 5" -- set $p.SIP.ProxyServer proxy.example.net \
  $p.SIP.ProxyServerPort 5070 $p.Line.1.SIP.AuthUserName alice $p.Line.1.SIP.AuthPassword s3cret
written="$(($(requests 16392) - proxy_writes)) $(($(requests 16585) - auth_writes))"
[ "$written" = "1 1" ] || { echo "FAIL sets in pairs: proxy and authentication writes $written, not 1 1"; failures=$((failures + 1)); }
check "sets in pairs: proxy read back" 0 "=proxy.example.net" -- get $p.SIP.ProxyServer
check "sets in pairs: port read back" 0 "=5070" -- get $p.SIP.ProxyServerPort
check "sets in pairs: user name read back" 0 "=alice" -- get $p.Line.1.SIP.AuthUserName
check "sets in pairs: password hidden by path" 0 "=" -- get $p.Line.1.SIP.AuthPassword
check "sets in pairs: password hidden by handler" 0 "=" -- get Tr104LineAuthPassword --line 1
check "issue-2 path: a set reaches the line's handler" 0 "" -- set $d.CallControl.Line.2.Enable true
check "issue-2 path: read back through issue 1" 0 "=Enabled" -- get $p.Line.2.Enable
check "issue-2 path: read back as the SIP client's" 0 "=true" -- get $d.SIP.Client.2.Enable
check "issue-2 path: 0 as false" 0 "" -- set $d.SIP.Client.2.Enable 0
check "issue-2 path: disabled in issue 1" 0 "=Disabled" -- get $p.Line.2.Enable
run dump $p.Line.1.SIP
hidden=0
grep -qxF "$p.Line.1.SIP.AuthPassword = " <<< "$out" && ! grep -qF s3cret <<< "$out" && hidden=1
verdict "dump: password hidden" "$hidden" 0 "$p.Line.1.SIP.AuthPassword = (empty)"
hidden=0
grep -qF "2a 2a 2a 2a 2a 2a 2a 2a" "$work/vmemu.log" && ! grep -qF "73 33 63 72 65 74" "$work/vmemu.log" && hidden=1
status=0 out=$(grep -F "request cmd=16585" "$work/vmemu.log" | tail -1)
verdict "request log: password as stars" "$hidden" 0 "2a 2a ... and no 73 33 63 72 65 74"
check "sets in pairs: a lone port written at the end" 0 "staged in slot 1" \
  "slot 1: writing its staged values now" -- set $p.SIP.RegistrarServerPort 5071 $p.Line.1.Enable Enabled
[ "$(($(requests 16389) - registrar_writes))" = 1 ] || { echo "FAIL sets in pairs: the lone port was not written once"; failures=$((failures + 1)); }
check "sets in pairs: lone port read back" 0 "=5071" -- get $p.SIP.RegistrarServerPort
# Both lines' credentials share one slot: each line's pair completes its own group, and no line's
# user name is written without its password.
auth_writes=$(requests 16585)
check "sets in pairs: both lines' credentials" 0 "Line.1.SIP.AuthPassword: set, completing slot 5" \
  "Line.2.SIP.AuthPassword: set, completing slot 5" -- set $p.Line.1.SIP.AuthUserName bob \
  $p.Line.1.SIP.AuthPassword pw1 $p.Line.2.SIP.AuthUserName carol $p.Line.2.SIP.AuthPassword pw2
[ "$(($(requests 16585) - auth_writes))" = 2 ] || { echo "FAIL sets in pairs: both lines' credentials were not written once each"; failures=$((failures + 1)); }
check "sets in pairs: line 2's user name read back" 0 "=carol" -- get $p.Line.2.SIP.AuthUserName
before=$(served)
check "sets in pairs: unknown path" 2 "no such parameter in the voice data model: '$p.SIP.ProxyServerPot'" -- \
  set $p.SIP.ProxyServer proxy2.example.net $p.SIP.ProxyServerPot 5071
check "sets in pairs: bad value" 2 "$p.SIP.ProxyServerPort: 'many' is not an unsignedInt" -- \
  set $p.SIP.ProxyServer proxy2.example.net $p.SIP.ProxyServerPort many
check "sets in pairs: text too long" 2 "AuthUserName: a text of at most 65 characters, not 66" -- \
  set $p.SIP.ProxyServer proxy2.example.net $p.Line.1.SIP.AuthUserName "$(printf 'u%.0s' $(seq 66))"
check "sets in pairs: a path without a value" 2 "'$p.Line.1.Enable' has no value" -- \
  set $p.SIP.ProxyServer proxy2.example.net $p.Line.1.Enable
check "sets in pairs: handler names are set alone" 2 "several values are set by data-model path only" -- \
  set Tr104LineEnable --line 1 -- 1 2
[ "$(served)" = "$before" ] || { echo "FAIL sets in pairs: a refused set sent requests"; failures=$((failures + 1)); }

# A dump sees one refused command as one fault; a voice module that stops answering ends the
# dump early, with the rest reported unread.
console "fault 80 marker" "fault 80 marker"
check "dump: one refused command" 0 "InternetGatewayDevice.X_QRV_VOIP_IPPARAMS.ManagementServerURL ! -1" \
  "InternetGatewayDevice.X_QRV_VOIP_IPPARAMS.DNSServer1 = " -- --no-emulate dump InternetGatewayDevice.X_QRV_VOIP
console "fault 0 silent" "fault 0 silent"
started=$SECONDS
check "dump: a silent voice module" 1 "! not read: the voice module does not answer" -- --no-emulate dump
if ((SECONDS - started > 15)); then
  echo "FAIL dump against a silent voice module took $((SECONDS - started)) s"; failures=$((failures + 1))
fi
console "clear" "faults cleared"

# Live watch: the library waits for the voice module's own messages.  The words are written so
# that they read the same in either byte order: "5555" is 0x35353535, "aaaa" 0x61616161, port
# 4883 is 0x1313 (word 29 holds it in bytes 118-119, padding in 116-117).
"${run[@]}" "$ctl" watch --seconds 60 --count 2 >"$work/watch.log" 2>&1 &
watcher=$!
for _ in $(seq 300); do grep -qs "watching inbound queue key 37" "$work/watch.log" && break; sleep 0.1; done
echo "inbound 7 1 16584 1 0 892679477 892679477" >&3
echo "inbound 7 1 16395 0 0 0 0 0 0 0 0 0 0 0 2 1633771873 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 320017171" >&3
wait "$watcher"
status=$?
out=$(cat "$work/watch.log")
expected="notify [module 28] $p.Line.1.DirectoryNumber = \"55555555\"
notify [module 28] $p.SIP.X_CT-COM_Standby-ProxyServer = \"aaaa\"
notify [module 28] $p.SIP.X_CT-COM_Standby-ProxyServerPort = \"4883\""
matched=0
[ "$(grep '^notify' <<< "$out")" = "$expected" ] && grep -qF "the agent received 2 notification(s) with 3 value(s)" <<< "$out" &&
  matched=1
verdict "watch: the voice module's own messages" "$matched" 0 "$expected"

# A live watch without a limit ends on SIGTERM (or Ctrl-C) with its totals.
"${run[@]}" "$ctl" watch --seconds 0 >"$work/watch.log" 2>&1 &
watcher=$!
for _ in $(seq 300); do grep -qs "watching inbound queue key 37 for ever" "$work/watch.log" && break; sleep 0.1; done
kill -TERM "$watcher"
wait "$watcher"
status=$?
out=$(cat "$work/watch.log")
matched=0
grep -qF "the agent received 0 notification(s)" <<< "$out" && matched=1
verdict "watch: SIGTERM ends it" "$matched" 0 "the agent received 0 notification(s)"

# 3. Bad requests: a clear message and a non-zero exit, nothing called.
check "unknown handler" 2 "no handler named 'Tr104NoSuchParameter'" -- get Tr104NoSuchParameter --line 1
check "integer handler given text" 2 "'Tr104LineTransmitGain' takes an integer, not 'loud'" -- \
  set Tr104LineTransmitGain --line 2 -- loud
check "integer handler given a fraction" 2 "takes an integer, not '1.5'" -- set Tr104LineHotlineDelay -- 1.5
check "two-argument byte handler given 300" 2 "'Tr104LedStandard' takes 0..255, not '300'" -- \
  set Tr104LedStandard 300
check "list: a two-argument handler's value" 0 "Tr104ProfileNumber                   integer" \
  "Tr104DnsIpConfig1                    IPv4 address" "Tr104IpParamConfig                   several values" -- list
check "locator not a number" 2 "--line: give a number from 0 to 65535, not 'x'" -- get Tr104LineEnable --line x
check "locator missing" 2 "--line: 1 required" -- get Tr104LineEnable --line
check "negative locator" 2 "--profile: give a number from 0 to 65535, not '-1'" -- get Tr104LineEnable --profile -1
check "line 3 refused by the handler" 1 "returned -2" -- get Tr104PhyReferenceList --line 3
check "exported name that is no handler" 2 "value kind of 'tr104MsgConstruct' is not known" -- get tr104MsgConstruct
check "gain without a direction" 2 "needs --direction" -- set Tr104LineGainSip --line 1 -- 7
check "set without a value" 2 "VALUE is required" -- set Tr104LineEnable --line 1
check "unknown command" 2 "unknown command 'frobnicate' (get, set," -- frobnicate
check "unknown option" 2 "not expected: 1 --lines" -- get Tr104LineEnable --lines 1
check "library not found" 2 "cannot load libtr104.so" -- --lib "$work/none/libtr104.so" get Tr104LineEnable
check "init: kind out of range" 2 "--kind: give a number from 1 to 7, not '9'" -- init --kind 9
check "init before list" 2 "not expected: list" -- init list
check "watch: kind without inbound queue" 2 "watch needs a module kind with an inbound queue (1 to 4), not 6" -- \
  watch --kind 6
check "watch: seconds not a number" 2 "--seconds: give a number from 0 to 86400, not 'soon'" -- watch --seconds soon
check "watch: count of zero" 2 "--count: give a number from 1 to 1000000, not '0'" -- watch --count 0
check "watch options on a get" 2 "not expected: 3 --seconds" -- get Tr104LineEnable --seconds 3
check "watch takes no arguments" 2 "not expected: Tr104LineEnable" -- watch Tr104LineEnable

exec 3>&-

kill -INT "$emu" 2>/dev/null
wait "$emu" 2>/dev/null

# 4. The tour: notifications reach the agent's entry point, the deferred groups are applied
# at once and by the timer (the demo itself fails unless exactly the right requests arrive),
# the request log is shown.
check "demo" 0 "notify [module 28] $p.Line.1.DirectoryNumber = \"5550123\"" \
  "SET_PROXY_CFG_ID) server flag=1 set: \"10.20.30.40\" port 5062, nUseIpOrHostname 1" \
  "GET_REGISTRAR_CFG_ID) server flag=1 get" \
  "SET_REGISTRAR_CFG_ID) server flag=1 set: \"registrar.example.net\" port 5070, nUseIpOrHostname 0" \
  "proxy writes in all: 1 " "what the voice module received" -- demo

rm -rf "$work"
if [ "$failures" -ne 0 ]; then
  echo "$failures check(s) failed"
  exit 1
fi
echo "all checks passed"
