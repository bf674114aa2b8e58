#!/usr/bin/env bash
# Every parameter handler the library exports is reachable from the client: tr104ctl knows the
# value kind of the handler or of its wrapper (the name without Sip/H248).  The functions that are
# not data-model parameters (notifiers, start-up, debug) are left out.
#
# usage: client_knows_handlers.sh <exports.txt> <tr104ctl>
set -uo pipefail
exports=$1 ctl=$2
not_parameters='ChangeNotify|^Tr104NotifyChangeValuesToTr069$|^Tr104DebugPrint$|^Tr104SetDebugLevel$|^Tr104VoiceCfg(Init|Save)$|^Tr104(SetProtocolType|RefreshCurrProtocolType|GetProtocolTypeFromScript)$|^Tr104SetSimplyDataType$'
known=$("$ctl" list | awk '{print $1}' | sort -u)
missing=0 checked=0
while read -r name; do
  checked=$((checked + 1))
  base=$(sed -E 's/(Sip|H248)$//' <<< "$name")
  if ! grep -qxF -e "$name" -e "$base" <<< "$known"; then
    echo "tr104ctl does not know $name"
    missing=$((missing + 1))
  fi
done < <(grep -E '^(Tr104|Tr069)' "$exports" | grep -Ev "$not_parameters")
echo "$checked handlers checked, $missing unknown to tr104ctl"
((missing == 0))
