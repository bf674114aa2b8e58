#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, when they are missing: the host
# toolchain and test frameworks, the device's cross compiler with the emulator that runs the
# cross-built tests (32-bit big-endian MIPS), and the servers and tools of the check scripts.
set -euo pipefail
needed=(cmake g++ make binutils googletest libgtest-dev libgmock-dev libbenchmark-dev util-linux
        g++-mips-linux-gnu qemu-user python3 nlohmann-json3-dev libcli11-dev
        autoconf automake libtool libssl-dev libsqlite3-dev zlib1g-dev pkg-config "$@")
# The installed-tree test (pkg-config) and the house rules (clang-format, clang-tidy).
needed+=(pkgconf clang-format clang-tidy)
needed+=(valgrind)  # the memcheck label
needed+=(clang libclang-rt-14-dev)  # the fuzz targets (libFuzzer)
needed+=(baresip-core kamailio iproute2 bc)  # tr104-voiced's SIP user agent and the registrar of its check
# The USP controller check: the MQTT broker, the agent's MQTT transport, and Node.js with npm for
# the controller library.  A Node.js from elsewhere that brings its own npm is kept as it is.
needed+=(mosquitto libmosquitto-dev)
command -v node >/dev/null || needed+=(nodejs)
command -v npm >/dev/null || needed+=(npm)
missing=()
for p in "${needed[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}"
  SUDO=""; [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" </dev/null
fi
