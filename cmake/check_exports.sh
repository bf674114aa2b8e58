#!/usr/bin/env bash
# Compares the dynamic symbols that libtr104.so defines with the names its public headers
# declare with TR104_API and with the list of the library's interface (cmake/exports.txt).
# Fails when a declared or listed name is missing from the library, or when the library exports
# a name that is neither declared nor listed (a C++ internal, a helper that should be hidden).
# usage: check_exports.sh <nm> <libtr104.so> <include dir> [<export list> [<pending list>]]
# Listed names that the pending list also names (a part of the interface still being written)
# are reported without failing; a pending name that is exported fails the check, so that the
# pending list is emptied as the names arrive.  With TR104_EXPORT_LIST_STRICT=0 in the
# environment, no missing listed name fails the check.
set -euo pipefail
nm_tool=$1 lib=$2 inc=$3 list=${4:-} pending_list=${5:-}
tmp=$(mktemp -d); trap 'rm -rf "$tmp"' EXIT

# The declared name is the last identifier before the first '(' '[' or ';' of the line.
grep -rhE '^\s*TR104_API\b' "$inc" --include='*.h' \
  | awk '{ line = $0; sub(/[([;].*/, "", line); n = split(line, w, /[^A-Za-z0-9_]+/);
           for (i = n; i > 0; i--) if (w[i] != "") { print w[i]; break } }' \
  | sort -u > "$tmp/declared"

: > "$tmp/listed"
if [ -n "$list" ]; then
  sed -e 's/#.*//' -e 's/[[:space:]]//g' "$list" | grep -v '^$' | sort -u > "$tmp/listed" || true
fi

: > "$tmp/pending"
if [ -n "$pending_list" ]; then
  sed -e 's/#.*//' -e 's/[[:space:]]//g' "$pending_list" | grep -v '^$' | sort -u > "$tmp/pending" || true
fi

"$nm_tool" -D --defined-only "$lib" | awk '{print $NF}' \
  | grep -vE '^(_init|_fini|__bss_start|_edata|_end|_fbss|_fdata|_ftext|__RLD_MAP|_DYNAMIC_LINKING|_gp_disp|__odr_asan\..*)$' \
  | sort -u > "$tmp/exported"

sort -u "$tmp/declared" "$tmp/listed" > "$tmp/known"
missing=$(comm -23 "$tmp/declared" "$tmp/exported")
comm -23 "$tmp/listed" "$tmp/exported" > "$tmp/unexported"
unlisted=$(comm -23 "$tmp/unexported" "$tmp/pending")
waiting=$(comm -12 "$tmp/unexported" "$tmp/pending")
arrived=$(comm -12 "$tmp/pending" "$tmp/exported")
extra=$(comm -13 "$tmp/known" "$tmp/exported")
status=0
report() {  # title, names
  echo "$1"; echo "$2" | sed 's/^/  /'
}
if [ -n "$missing" ]; then
  report "declared in include/ but not exported by $(basename "$lib"):" "$missing"; status=1
fi
if [ -n "$unlisted" ]; then
  report "listed in $(basename "$list") but not exported by $(basename "$lib") ($(echo "$unlisted" | wc -l) names):" "$unlisted"
  [ "${TR104_EXPORT_LIST_STRICT:-1}" = 0 ] || status=1
fi
if [ -n "$waiting" ]; then
  report "listed, not exported yet (pending: $(echo "$waiting" | wc -l) names)" "$(echo "$waiting" | tr '\n' ' ')"
fi
if [ -n "$arrived" ]; then
  report "exported, but still named in $(basename "$pending_list"): remove them there" "$arrived"; status=1
fi
if [ -n "$extra" ]; then
  report "exported by $(basename "$lib") but neither declared in include/ nor listed:" "$extra"; status=1
fi
echo "$(wc -l < "$tmp/declared") names declared, $(wc -l < "$tmp/listed") listed, $(wc -l < "$tmp/exported") exported"
exit $status
