#!/usr/bin/env bash
# Every exported parameter handler (Tr104*, Tr069*) is named in the README or in another of the
# documents given (the handler index written from the catalogue, docs/handlers.md): usage
#   check_readme_index.sh EXPORTS_LIST README [DOC]...
# A name counts when it, or the name without its trailing Sip or H248 (a wrapper's row covers its
# variants), is written in backticks anywhere in the README. Braces are expanded as bash does
# (`Tr104Line{Send,Rcvd}RtpBytes`); text in backticks is split on everything that cannot be part of
# a name or of a brace list. Prints every name that is missing and fails when there is one.
set -euo pipefail
exports=$1 readme=$2
shift

# Words written in backticks, reduced to the characters of names and brace lists. Only those
# characters reach eval, so the eval does nothing but expand braces.
words=$({ grep -ho '`[^`]*`' "$@" || true; } | tr -c 'A-Za-z0-9_{},' '\n' | awk NF | sort -u | tr '\n' ' ')
documented=$(eval "printf '%s\n' $words" | tr ',' '\n' | awk NF | sort -u)

handlers=$(sed 's/#.*//' "$exports" | tr -s ' \t' '\n' | awk '/^(Tr104|Tr069)/' | sort -u)
missing=$(awk 'NR == FNR { doc[$0] = 1; next }
               { base = $0; sub(/(Sip|H248)$/, "", base) }
               !($0 in doc) && !(base in doc)' <(printf '%s\n' "$documented") <(printf '%s\n' "$handlers"))

count=$(printf "%s\n" "$handlers" | awk NF | wc -l)
if [ -n "$missing" ]; then
  echo "$(printf "%s\n" "$missing" | wc -l) of $count handlers of $exports are not named in $readme:"
  printf '  %s\n' $missing
  exit 1
fi
echo "all $count handlers of $exports are named in $readme"
