#!/usr/bin/env bash
# Compares the dynamic symbols that libtr104.so defines with the names its public headers
# declare with TR104_API.  Fails when a declared name is missing from the library, or when
# the library exports anything undeclared (a C++ internal, a helper that should be hidden).
# usage: check_exports.sh <nm> <libtr104.so> <include dir>
set -euo pipefail
nm_tool=$1 lib=$2 inc=$3
tmp=$(mktemp -d); trap 'rm -rf "$tmp"' EXIT

# The declared name is the last identifier before the first '(' '[' or ';' of the line.
grep -rhE '^\s*TR104_API\b' "$inc" --include='*.h' \
  | awk '{ line = $0; sub(/[([;].*/, "", line); n = split(line, w, /[^A-Za-z0-9_]+/);
           for (i = n; i > 0; i--) if (w[i] != "") { print w[i]; break } }' \
  | sort -u > "$tmp/declared"

"$nm_tool" -D --defined-only "$lib" | awk '{print $NF}' \
  | grep -vE '^(_init|_fini|__bss_start|_edata|_end|_fbss|_fdata|_ftext|__RLD_MAP|_DYNAMIC_LINKING|_gp_disp|__odr_asan\..*)$' \
  | sort -u > "$tmp/exported"

missing=$(comm -23 "$tmp/declared" "$tmp/exported")
extra=$(comm -13 "$tmp/declared" "$tmp/exported")
status=0
if [ -n "$missing" ]; then
  echo "declared in include/ but not exported by $(basename "$lib"):"; echo "$missing" | sed 's/^/  /'; status=1
fi
if [ -n "$extra" ]; then
  echo "exported by $(basename "$lib") but not declared in include/:"; echo "$extra" | sed 's/^/  /'; status=1
fi
echo "$(wc -l < "$tmp/declared") names declared, $(wc -l < "$tmp/exported") exported"
exit $status
