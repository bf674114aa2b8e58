#!/usr/bin/env bash
# The export check against made-up libraries: a stand-in nm prints the symbol table of the case.
set -uo pipefail
check=$1
unset TR104_EXPORT_LIST_STRICT  # each case sets its own
tmp=$(mktemp -d); trap 'rm -rf "$tmp"' EXIT
mkdir -p "$tmp/include/tr104"
printf 'TR104_API int Declared(int nFlag);\nTR104_API extern int gDeclared;\n' > "$tmp/include/tr104/a.h"
printf '# interface\nListed\ngDeclared   # a global\n' > "$tmp/exports.txt"
printf '# still being written\nListed\n' > "$tmp/pending.txt"
cat > "$tmp/nm" <<'NM'
#!/usr/bin/env bash
sed 's/^/00000000 T /' "$(dirname "$0")/symbols"
NM
chmod +x "$tmp/nm"

failures=0
# name, expected status, symbols exported, expected text (or empty), environment, pending list
run() {
  printf '%s\n' $3 > "$tmp/symbols"
  out=$(env $5 bash "$check" "$tmp/nm" lib.so "$tmp/include" "$tmp/exports.txt" ${6:-} 2>&1); rc=$?
  if [ "$rc" != "$2" ] || { [ -n "$4" ] && ! grep -qF -- "$4" <<< "$out"; }; then
    echo "FAIL $1: status $rc (expected $2)"; echo "$out" | sed 's/^/    /'; failures=$((failures + 1))
  else
    echo "ok   $1"
  fi
}
run "everything present"          0 "Declared gDeclared Listed _init"       "2 names declared, 2 listed, 3 exported" ""
run "a listed name missing"       1 "Declared gDeclared"                    "  Listed" ""
run "missing, not strict"         0 "Declared gDeclared"                    "  Listed" "TR104_EXPORT_LIST_STRICT=0"
run "a declared name missing"     1 "gDeclared Listed"                      "but not exported" ""
run "an unknown name exported"    1 "Declared gDeclared Listed _Z3fooi"     "  _Z3fooi" ""
run "unknown even when not strict" 1 "Declared gDeclared Listed helper"     "  helper" "TR104_EXPORT_LIST_STRICT=0"
run "missing but pending"         0 "Declared gDeclared"                    "pending: 1 names" "" "$tmp/pending.txt"
run "pending but exported"        1 "Declared gDeclared Listed"             "still named in pending.txt" "" "$tmp/pending.txt"
exit $((failures > 0))
