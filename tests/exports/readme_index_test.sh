#!/usr/bin/env bash
# The README index check against made-up lists and READMEs: braces expand, a wrapper's name
# covers its Sip and H248 variants, names outside backticks do not count, a missing name fails.
set -uo pipefail
check=$1
tmp=$(mktemp -d); trap 'rm -rf "$tmp"' EXIT
printf '# interface\nTr104LineEnable\nTr104LineEnableSip   # variant\nTr104FaxT38EnableH248\nTr069LineCodecListCodecType\nTr104LineSendRtpBytes\ngTr104Other\n' > "$tmp/exports.txt"

failures=0
# name, expected status, README text, expected output (or empty)
run() {
  printf '%s\n' "$3" > "$tmp/README.md"
  out=$(bash "$check" "$tmp/exports.txt" "$tmp/README.md" 2>&1); rc=$?
  if [ "$rc" != "$2" ] || { [ -n "$4" ] && ! grep -qF -- "$4" <<< "$out"; }; then
    echo "FAIL $1: status $rc (expected $2)"; echo "$out" | sed 's/^/    /'; failures=$((failures + 1))
  else
    echo "ok   $1"
  fi
}
codec='`Tr069LineCodecListCodecType(nFlag)`' rtp='`Tr104Line{Send,Rcvd}Rtp{Packets,Bytes}`'
run "every name, braces expanded"   0 "| \`Tr104LineEnable\`, \`Tr104FaxT38Enable\` | $codec | $rtp |" "all 5 handlers"
run "a name missing"                1 "| \`Tr104LineEnable\` | $codec | $rtp |" "  Tr104FaxT38EnableH248"
run "a name outside backticks"      1 "| Tr104LineEnable, \`Tr104FaxT38Enable\` | $codec | $rtp |" "2 of 5 handlers"
run "a variant alone is no wrapper" 1 "| \`Tr104LineEnableSip\`, \`Tr104FaxT38Enable\` | $codec | $rtp |" "  Tr104LineEnable"
run "an abbreviated name"           1 "| \`Tr104LineEnable\`, \`Tr104FaxT38Enable\` | $codec | \`Tr104LineSend...\` |" "  Tr104LineSendRtpBytes"
exit $((failures > 0))
