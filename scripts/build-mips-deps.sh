#!/usr/bin/env bash
# Cross-builds the test framework (GoogleTest and GoogleMock) for the device from Debian's source
# package (/usr/src/googletest, package "googletest") with the given toolchain file, and installs
# it into a prefix of its own.  The host's prebuilt libraries are x86-64 and never used for a
# cross build.
#
# usage: build-mips-deps.sh [toolchain file] [install prefix]
#   defaults: cmake/mips-linux-gnu.cmake and build/mips-deps
# Does nothing when the prefix already holds a build made with the same toolchain file.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
toolchain=$(realpath "${1:-$root/cmake/mips-linux-gnu.cmake}")
prefix=$(realpath -m "${2:-$root/build/mips-deps}")
src=${GTEST_SOURCE_DIR:-/usr/src/googletest}
stamp="$prefix/.built-with"

if [ -f "$prefix/lib/cmake/GTest/GTestConfig.cmake" ] && [ "$(cat "$stamp" 2>/dev/null)" = "$toolchain" ]; then
  exit 0
fi
if [ ! -f "$src/CMakeLists.txt" ]; then
  echo "GoogleTest sources not found in $src (Debian package \"googletest\")" >&2
  exit 1
fi

work="$prefix.work"
rm -rf "$work" "$prefix"
echo "cross-building GoogleTest from $src with $(basename "$toolchain") into $prefix"
cmake -S "$src" -B "$work" \
  -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
  -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_INSTALL_PREFIX="$prefix" \
  -DCMAKE_INSTALL_LIBDIR=lib \
  -DBUILD_GMOCK=ON -DINSTALL_GTEST=ON -DBUILD_SHARED_LIBS=OFF \
  >"$work.log" 2>&1 || { cat "$work.log" >&2; exit 1; }
cmake --build "$work" -j "${TR104_JOBS:-2}" >>"$work.log" 2>&1 || { cat "$work.log" >&2; exit 1; }
cmake --install "$work" >>"$work.log" 2>&1 || { cat "$work.log" >&2; exit 1; }
echo "$toolchain" > "$stamp"
rm -rf "$work" "$work.log"
