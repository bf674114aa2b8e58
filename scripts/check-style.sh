#!/usr/bin/env bash
# House rules: clang-format (.clang-format) and clang-tidy (.clang-tidy) find nothing.
#
# Most of the tree was written before these rules, with hand-aligned tables and comments that no
# formatter configuration reproduces, so formatting is checked on the lines changed since BASE
# below (git clang-format), and clang-tidy runs on the C and C++ sources changed since BASE.  The
# chosen clang-tidy checks find nothing on the whole tree: --all checks every source.  BASE is the
# commit that brought the rules in, with the work merged beside them.
#
# usage: check-style.sh [BUILD_DIR] [--all]    (BUILD_DIR: a build with compile_commands.json,
#                                               build/host by default)
set -euo pipefail
cd "$(dirname "$0")/.."
BASE=529cb7c710668a9933a391decf11703438669b4f
build=build/host all=0
for arg in "$@"; do
  case $arg in
    --all) all=1 ;;
    *) build=$arg ;;
  esac
done
status=0

if ! git cat-file -e "$BASE^{commit}" 2>/dev/null; then
  # A copy without the history (a shallow clone, an archive): no changed lines to format, and
  # clang-tidy looks at every source.
  echo "check-style: the base commit $BASE is not here: formatting not checked, clang-tidy on every source"
  all=1
else
  out=$(git-clang-format --diff "$BASE" --extensions c,h,cpp -- tr104 v2lin include tools tests bench 2>&1)
  case $out in
    "clang-format did not modify any files" | "no modified files to format") ;;
    *) echo "$out"; echo "check-style: format the lines above (git clang-format $BASE)"; status=1 ;;
  esac
fi

if [ ! -f "$build/compile_commands.json" ]; then
  echo "check-style: no $build/compile_commands.json (configure the build first)" >&2
  exit 1
fi
if ((all)); then
  mapfile -t sources < <(find tr104 v2lin tools tests bench -name '*.cpp' | sort)
else
  mapfile -t sources < <(git diff --name-only --diff-filter=d "$BASE" -- 'tr104/*.cpp' 'v2lin/*.cpp' 'tools/*.cpp' \
    'tests/*.cpp' 'bench/*.cpp')
fi
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
echo "check-style: format of changed lines and clang-tidy on ${#checked[@]} sources: $([ $status -eq 0 ] && echo clean || echo FINDINGS)"
exit $status
