#!/usr/bin/env bash
# House rules: clang-format (.clang-format) and clang-tidy (.clang-tidy) find nothing, on every
# C and C++ file of the repository (third_party/ aside: it is kept as it came).  Tables whose
# columns must stay aligned say so with "// clang-format off" and the reason.
#
# usage: check-style.sh [BUILD_DIR]    (BUILD_DIR: a build with compile_commands.json,
#                                       build/host by default)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/host}
status=0

mapfile -t formatted < <(git ls-files '*.c' '*.h' '*.cpp' | grep -v '^third_party/')
if ! clang-format --dry-run --Werror "${formatted[@]}" >"/tmp/check-style.$$" 2>&1; then
  grep -E "^[^ ].*(warning|error):" "/tmp/check-style.$$" | cut -d: -f1 | sort -u | sed 's/^/  not formatted: /'
  echo "check-style: run clang-format -i on the files above"
  status=1
fi
rm -f "/tmp/check-style.$$"

if [ ! -f "$build/compile_commands.json" ]; then
  echo "check-style: no $build/compile_commands.json (configure the build first)" >&2
  exit 1
fi
mapfile -t sources < <(git ls-files '*.cpp' | grep -v '^third_party/')
# Only sources the build compiles (a file of another configuration has no compile command).
checked=()
for f in "${sources[@]}"; do
  grep -qF "\"file\": \"$PWD/$f\"" "$build/compile_commands.json" && checked+=("$PWD/$f")
done
if ((${#checked[@]})); then
  # Compiler warnings are left to GCC (-Wall -Wextra -Werror): clang-tidy reports its checks only.
  if ! printf '%s\n' "${checked[@]}" | xargs -P "$(nproc 2>/dev/null || echo 2)" -n 4 \
       clang-tidy -p "$build" --quiet --extra-arg=-w >"$build/clang-tidy.log" 2>&1; then
    grep -E "(warning|error):" "$build/clang-tidy.log" | sort -u
    echo "check-style: clang-tidy findings above (whole log: $build/clang-tidy.log)"
    status=1
  fi
fi
echo "check-style: format of ${#formatted[@]} files and clang-tidy on ${#checked[@]} sources: $([ $status -eq 0 ] && echo clean || echo FINDINGS)"
exit $status
