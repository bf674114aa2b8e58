#!/usr/bin/env bash
# The Debian packages of a build (host or device): cpack -G DEB, then each package's name,
# version, architecture, dependencies and contents as dpkg-deb reports them, the machine of the
# library it carries, and the service unit pointing at the packaged emulator.
#
# usage: package_test.sh <build dir> <architecture, or host for this machine's> <version>
set -euo pipefail
build=$1 arch=$2 version=$3
major=${version%%.*}
[ "$arch" != host ] || arch=$(dpkg --print-architecture)
work=$(mktemp -d /tmp/tr104-package-test.XXXXXX)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1 \
  || { cat "$work/cpack.log"; exit 1; }

# package | Depends must name | paths it carries (! a path it must not carry)
while IFS='|' read -r pkg depends paths; do
  deb=$work/${pkg}_${version}_${arch}.deb
  if [ ! -f "$deb" ]; then
    fail "no $deb"; continue
  fi
  for field in "Package:$pkg" "Version:$version" "Architecture:$arch"; do
    [ "$(dpkg-deb -f "$deb" "${field%%:*}")" = "${field#*:}" ] || fail "$pkg: ${field%%:*} is not ${field#*:}"
  done
  for dep in $depends; do
    dpkg-deb -f "$deb" Depends | tr ',' '\n' | sed 's/^ //' | grep -qxF "${dep//_/ }" || fail "$pkg: Depends lacks ${dep//_/ }"
  done
  dpkg-deb --contents "$deb" | awk '{print $6}' | sed 's|^\./||' >"$work/$pkg.list"
  for path in $paths; do
    if [ "${path#!}" != "$path" ]; then
      ! grep -qx "${path#!}" "$work/$pkg.list" || fail "$pkg carries ${path#!}"
    else
      grep -qx "$path" "$work/$pkg.list" || fail "$pkg lacks $path"
    fi
  done
  echo "$(basename "$deb"): $(wc -c <"$deb") bytes"
done <<EOF_TABLE
libtr104-$major|libc6_(>=_2.36) libstdc++6_(>=_12)|usr/lib/libtr104.so.$version usr/lib/libtr104.so.$major usr/lib/libtr104map.so.$major usr/share/tr104/voice-map.tsv !usr/lib/libtr104.so !usr/include/tr104.h
libtr104-dev|libtr104-${major}_(=_$version)|usr/include/tr104.h usr/include/tr104/version.h usr/include/v2lin_start.h usr/lib/libtr104.so usr/lib/libtr104map.so usr/lib/libv2lin_start.a usr/lib/cmake/tr104/tr104Config.cmake usr/lib/pkgconfig/tr104.pc !usr/lib/libtr104.so.$version
tr104-tools|libtr104-${major}_(=_$version) libc6_(>=_2.36)|usr/bin/tr104-vmemu usr/bin/tr104ctl usr/lib/systemd/system/tr104-vmemu.service
EOF_TABLE

# The library is built for the package's architecture (ELF class, byte order and machine), and
# the unit starts the packaged emulator.
dpkg-deb -x "$work/libtr104-${major}_${version}_${arch}.deb" "$work/root"
dpkg-deb -x "$work/tr104-tools_${version}_${arch}.deb" "$work/root"
elf=$(od -An -tx1 -j4 -N2 "$work/root/usr/lib/libtr104.so.$version" | tr -d ' ')$(od -An -tx1 -j18 -N2 "$work/root/usr/lib/libtr104.so.$version" | tr -d ' ')
case $arch in
  amd64) want=02013e00 ;;  # 64-bit, little-endian, x86-64
  mips) want=01020008 ;;   # 32-bit, big-endian, MIPS
  *) want=$elf ;;
esac
[ "$elf" = "$want" ] || fail "libtr104.so is not an $arch library (ELF bytes $elf)"
grep -qx 'ExecStart=/usr/bin/tr104-vmemu .*' "$work/root/usr/lib/systemd/system/tr104-vmemu.service" \
  || fail "the unit does not start /usr/bin/tr104-vmemu"

if ((failures)); then
  echo "$failures package checks failed"; exit 1
fi
echo "package test passed"
