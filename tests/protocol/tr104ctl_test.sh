#!/usr/bin/env bash
# The command-line client end to end: against a voice-module emulator running as its own
# process (as a real voice module would), with its built-in emulator, and with bad requests.
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

# check NAME WANT_EXIT PATTERN -- ARGS...: runs tr104ctl, checks its exit code and that its
# output (stdout and stderr together) contains PATTERN (a fixed string; "" matches anything;
# "=TEXT" wants the output to be exactly TEXT).
check() {
  local name=$1 want=$2 pattern=$3
  shift 4
  local out status
  out=$("${run[@]}" "$ctl" "$@" 2>&1)
  status=$?
  local matched=1
  if [ "${pattern:0:1}" = "=" ]; then
    [ "$out" = "${pattern:1}" ] || matched=0
  else
    grep -qF -- "$pattern" <<< "$out" || matched=0
  fi
  if [ "$status" -ne "$want" ] || [ "$matched" -ne 1 ]; then
    echo "FAIL $name: exit $status (want $want), output:"; sed 's/^/    /' <<< "$out"
    echo "    (wanted to see: $pattern)"
    failures=$((failures + 1))
  else
    echo "ok   $name"
  fi
}

# 1. Built-in emulator, chosen explicitly and because no voice module is running here.
check "emulate: protocol name" 0 "=SIP" -- --emulate get Tr104VoiceProtocolType
check "emulate: other protocol name" 0 "=H.248" -- --emulate --protocol H.248 get Tr104VoiceProtocolType
check "no voice module: emulator by default" 0 "=SIP" -- get Tr104VoiceProtocolType
check "H.248: caller id answered by the wrapper" 0 "=1" -- --protocol H.248 get Tr104LineCallerIdFlag --line 1
check "protocol 0: wrapper refuses" 1 "returned -1" -- --protocol none get Tr104LineEnable --line 1
check "--no-emulate without a voice module" 1 "" -- --no-emulate get Tr104VoiceProtocolType
# The run above left the send queue behind: it exists now, but nobody answers on it.
check "silent queue: emulator takes over" 0 "no voice module answers; the emulator plays it" -- \
  get Tr104VoiceProtocolType

# 2. A voice module of its own process: values set by one client run are read by the next.
ready=$work/ready
"${run[@]}" "$vmemu" --quiet --ready-file "$ready" </dev/null >"$work/vmemu.log" 2>&1 &
emu=$!
for _ in $(seq 300); do [ -e "$ready" ] && break; sleep 0.1; done
if [ ! -e "$ready" ]; then
  echo "FAIL tr104-vmemu did not start"; cat "$work/vmemu.log"; exit 1
fi
check "set line enable" 0 "=" -- set Tr104LineEnable --line 1 -- Enabled
check "get line enable" 0 "=Enabled" -- --no-emulate get Tr104LineEnable --line 1
check "set transmit gain (SIP variant by the current protocol)" 0 "" -- set Tr104LineTransmitGain --line 2 -- -5
check "get transmit gain" 0 "=-5" -- get Tr104LineTransmitGain --line 2
check "gain out of range" 1 "returned -1" -- set Tr104LineTransmitGain --line 2 -- -33
check "set start digit timer" 0 "=" -- set Tr104StartDigitTimerSip --line 1 -- 20
check "get dial tone timer" 0 "=20" -- get Tr104DialToneTimerSip --line 1
check "multi-argument gain" 0 "" -- set Tr104LineGainSip --line 1 --direction 1 -- 7

# 3. Bad requests: a clear message and a non-zero exit, nothing called.
check "unknown handler" 2 "no handler named 'Tr104NoSuchParameter'" -- get Tr104NoSuchParameter --line 1
check "integer handler given text" 2 "'Tr104LineTransmitGain' takes an integer, not 'loud'" -- \
  set Tr104LineTransmitGain --line 2 -- loud
check "integer handler given a fraction" 2 "takes an integer, not '1.5'" -- set Tr104LineHotlineDelay -- 1.5
check "locator not a number" 2 "bad locator --line 'x'" -- get Tr104LineEnable --line x
check "locator missing" 2 "bad locator --line" -- get Tr104LineEnable --line
check "negative locator" 2 "bad locator --profile '-1'" -- get Tr104LineEnable --profile -1
check "line 3 refused by the handler" 1 "returned -2" -- get Tr104PhyReferenceList --line 3
check "exported name that is no handler" 2 "value kind of 'tr104MsgConstruct' is not known" -- get tr104MsgConstruct
check "gain without a direction" 2 "needs --direction" -- set Tr104LineGainSip --line 1 -- 7
check "set without a value" 2 "usage: tr104ctl set" -- set Tr104LineEnable --line 1
check "unknown command" 2 "unknown command 'frobnicate'" -- frobnicate
check "unknown option" 2 "unknown option --lines" -- get Tr104LineEnable --lines 1
check "library not found" 2 "cannot load libtr104.so" -- --lib "$work/none/libtr104.so" get Tr104LineEnable

kill -INT "$emu" 2>/dev/null
wait "$emu" 2>/dev/null

# 4. The tour: notifications reach the agent's entry point, the request log is shown.
check "demo" 0 "notify [module 28] InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1.Line.1.DirectoryNumber = \"5550123\"" -- demo
check "demo request log" 0 "what the voice module received" -- demo

rm -rf "$work"
if [ "$failures" -ne 0 ]; then
  echo "$failures check(s) failed"
  exit 1
fi
echo "all checks passed"
