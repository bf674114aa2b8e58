#!/usr/bin/env bash
# The installed tree as an integrator sees it: cmake --install into a temporary prefix, a small C
# program built against it through the CMake package and through pkg-config, both run against
# the installed emulator in a private IPC namespace.
#
# usage: install_test.sh <build dir> <consumer source dir> <C compiler>
set -euo pipefail
build=$1 src=$2 cc=$3
if [ -z "${TR104_INSTALL_TEST_INNER:-}" ]; then
  exec env TR104_INSTALL_TEST_INNER=1 unshare --ipc bash "$0" "$@"
fi
work=$(mktemp -d /tmp/tr104-install-test.XXXXXX)
vmemu_pid=
cleanup() {
  [ -z "$vmemu_pid" ] || kill "$vmemu_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
for f in bin/tr104-vmemu bin/tr104ctl include/tr104.h include/tr104/version.h lib/libtr104.so.1 \
         lib/libtr104map.so.1 lib/libv2lin_start.a share/tr104/voice-map.tsv lib/pkgconfig/tr104.pc \
         lib/cmake/tr104/tr104Config.cmake lib/systemd/system/tr104-vmemu.service; do
  [ -e "$prefix/$f" ] || { echo "FAIL: $f not installed"; exit 1; }
done
"$prefix/bin/tr104-vmemu" --version | grep -qx "tr104-vmemu $(sed -n 's/^Version: //p' "$prefix/lib/pkgconfig/tr104.pc")" \
  || { echo "FAIL: tr104-vmemu --version disagrees with tr104.pc"; exit 1; }

# Both ways of building against the tree; the build tree is nowhere on their paths.
cmake -S "$src" -B "$work/cmake-build" -DCMAKE_C_COMPILER="$cc" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_BUILD_RPATH="$prefix/lib" >/dev/null
cmake --build "$work/cmake-build" >/dev/null
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
# shellcheck disable=SC2046
"$cc" -o "$work/consumer-pc" "$src/consumer.c" $(pkg-config --cflags --libs tr104) -Wl,-rpath,"$prefix/lib"

# The runtime on its own, started by the installed start-up library.
timeout 30 "$work/cmake-build/standalone" || { echo "FAIL: the stand-alone start-up did not exit 0"; exit 1; }

# The installed emulator as a development server: its configuration kept in a state file across
# a restart, its console on a control socket.
state=$work/state.json control=$work/control
start_vmemu() {
  rm -f "$work/ready"
  "$prefix/bin/tr104-vmemu" --quiet --ready-file "$work/ready" --state "$state" --control "$control" \
    </dev/null >>"$work/vmemu.log" 2>&1 &
  vmemu_pid=$!
  for _ in $(seq 100); do [ -e "$work/ready" ] && break; sleep 0.05; done
  [ -e "$work/ready" ] || { echo "FAIL: the installed emulator did not start"; cat "$work/vmemu.log"; exit 1; }
}
# wait_for TEST...: up to 5 s for a condition.
wait_for() {
  for _ in $(seq 100); do "$@" && return 0; sleep 0.05; done
  return 1
}
expect_value() {
  "$1" | tee "$work/out" | grep -v '^=====' | sed '/^$/d'
  grep -qF "= \"$2\" (rc 0), save 0" "$work/out" || { echo "FAIL: $1 did not read $2"; exit 1; }
}
control_says() {
  python3 -c 'import socket, sys
s = socket.socket(socket.AF_UNIX); s.connect(sys.argv[1]); s.sendall(sys.argv[2].encode() + b"\n")
s.shutdown(socket.SHUT_WR); sys.stdout.write(s.makefile().read())' "$control" "$1"
}

start_vmemu
expect_value "$work/cmake-build/consumer" Disabled
"$prefix/bin/tr104ctl" --no-emulate set Tr104LineEnable --line 1 -- Enabled >/dev/null
control_says "log 2" | tee "$work/log" | tail -1
grep -q "requests served" "$work/log" || { echo "FAIL: no request log on the control socket"; exit 1; }
# The save writes the file; a kill (no exit save) then restart keeps the configuration.
rm -f "$state"
expect_value "$work/consumer-pc" Enabled
wait_for test -s "$state" || { echo "FAIL: no state file after a save"; exit 1; }
kill -KILL "$vmemu_pid"; wait "$vmemu_pid" 2>/dev/null || true
start_vmemu
expect_value "$work/cmake-build/consumer" Enabled
# And on exit.
rm -f "$state"
kill -TERM "$vmemu_pid"; wait "$vmemu_pid" || true
vmemu_pid=
[ -s "$state" ] || { echo "FAIL: no state file on exit"; exit 1; }
echo "install test passed"
