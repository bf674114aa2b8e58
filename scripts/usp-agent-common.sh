# The USP agent, the plug-in and the emulator for the checks that drive the voice data model
# through the agent (sourced by scripts/usp-agent-check.sh, scripts/usp-controller-check.sh and
# bench/usp-controller.sh).  Needs ROOT and BUILD.
#
# The agent is built once into $BUILD/obuspa from the repository's copy of its source, with its
# MQTT transport (a controller reaches it through a broker) and its Unix-socket transport (its
# command-line client, the vendor layer).  It polls the parameters a controller subscribed to
# every AGENT_POLL_PERIOD seconds instead of its default 15: the vendor layer has no call that
# marks a parameter as changed, so the poll is what turns a change the voice module reports into
# a ValueChange notification.  A build made with other settings is made again.
. "$ROOT/scripts/check-common.sh"
AGENT_VERSION=obuspa-11.0.4
AGENT_POLL_PERIOD=1
AGENT_CONFIGURE=(--disable-stomp --disable-coap --disable-websockets --disable-bulkdata)
AGENT_DIR=$BUILD/obuspa
OBUSPA=$AGENT_DIR/prefix/bin/obuspa
PLUGIN=$BUILD/agents/libtr104-usp.so
VMEMU=$BUILD/tools/tr104-vmemu
CTL=$BUILD/tools/tr104ctl

# Builds the agent when it is missing or was built with other settings, then the plug-in, the
# emulator and the client.  Prints what went wrong and fails when something does not build.
buildAgentAndPlugin() {
  local src=$AGENT_DIR/$AGENT_VERSION prefix=$AGENT_DIR/prefix start settings
  local tarball=${TR104_USP_AGENT_TARBALL:-$ROOT/third_party/obuspa/$AGENT_VERSION.tar.gz}
  settings="${AGENT_CONFIGURE[*]} poll=$AGENT_POLL_PERIOD"
  if [ ! -x "$OBUSPA" ] || [ "$(cat "$AGENT_DIR/settings" 2>/dev/null)" != "$settings" ]; then
    [ -f "$tarball" ] || { echo "no agent source $tarball"; return 1; }
    pkg-config --exists libmosquitto ||
      { echo "the agent's MQTT transport needs libmosquitto: install the Debian package libmosquitto-dev (scripts/install-deps.sh does)"; return 1; }
    start=$(date +%s)
    echo "building the USP agent into $AGENT_DIR (log: $AGENT_DIR/build.log)"
    rm -rf "$src" "$prefix" "$AGENT_DIR/settings" && mkdir -p "$AGENT_DIR" && tar xzf "$tarball" -C "$AGENT_DIR" || return 1
    # The poll period is a define of the agent's vendor settings file.
    sed -i "s/^#define VALUE_CHANGE_POLL_PERIOD .*/#define VALUE_CHANGE_POLL_PERIOD  ($AGENT_POLL_PERIOD)/" \
      "$src/src/vendor/vendor_defs.h"
    grep -q "^#define VALUE_CHANGE_POLL_PERIOD  ($AGENT_POLL_PERIOD)" "$src/src/vendor/vendor_defs.h" ||
      { echo "the agent's source has no VALUE_CHANGE_POLL_PERIOD to set"; return 1; }
    if ! (cd "$src" && autoreconf --force --install && ./configure --prefix="$prefix" "${AGENT_CONFIGURE[@]}" &&
          make -j2 && make install) >"$AGENT_DIR/build.log" 2>&1; then
      tail -20 "$AGENT_DIR/build.log"
      return 1
    fi
    echo "$settings" >"$AGENT_DIR/settings"
    echo "agent built in $(($(date +%s) - start)) s"
  fi
  # Configure again: the plug-in is built once the agent's headers are there.
  (cd "$ROOT" && cmake --preset host >/dev/null && cmake --build "$BUILD" -j2 --target tr104-usp tr104ctl tr104-vmemu) \
    >"$AGENT_DIR/plugin-build.log" 2>&1 || { tail -20 "$AGENT_DIR/plugin-build.log"; return 1; }
}

# Everything below runs inside the check's namespaces, with WORK set.
EMU="" AGENT=""
SOCK=${WORK:-}/cli.sock
cli() { timeout 60 "$OBUSPA" -s "$SOCK" -c "$@" 2>&1; }
requestCount() { grep -c '^\[vmemu\] module=' "$WORK/vmemu.log"; }
# A console command of the emulator; its answer is what it printed after the command.
console() {
  local before; before=$(wc -l <"$WORK/vmemu.log")
  echo "$*" >&3
  for _ in $(seq 100); do
    [ "$(wc -l <"$WORK/vmemu.log")" -gt "$before" ] && break
    sleep 0.02
  done
  sleep 0.05
  tail -n +"$((before + 1))" "$WORK/vmemu.log" | grep -v '^\[vmemu\]'
}
# The bytes of a 32-bit word in this machine's order, as the request log prints them.
wordBytes() { python3 -c "import struct,sys; print(struct.pack('=I', int(sys.argv[1])).hex(' '))" "$1"; }
textBytes() { printf '%s' "$1" | od -An -tx1 | tr -s ' \n' ' ' | sed 's/^ //; s/ $//'; }
# The command id of the last request logged (whose name has TEXT).
commandId() { grep "^\[vmemu\] module=.*${1:-}" "$WORK/vmemu.log" | tail -1 | sed 's/.* cmd=\([0-9]*\) .*/\1/'; }

# The voice module: the emulator, its console on a pipe (file descriptor 3); sets EMU.
startEmulator() {
  mkfifo "$WORK/console"
  exec 3<>"$WORK/console"  # read-write: never blocks, even when the emulator does not start
  "$VMEMU" --ready-file "$WORK/vmemu.ready" <"$WORK/console" >"$WORK/vmemu.log" 2>&1 &
  EMU=$!
  waitFor 5 test -f "$WORK/vmemu.ready"
}

# The agent with the plug-in, more options in "$@" (e.g. -r FACTORY_RESET_FILE); sets AGENT.
# True once its command-line client answers (at most 20 s).
startAgent() {
  (cd "$WORK" && exec "$OBUSPA" -v 3 -f "$WORK/usp.db" -s "$SOCK" -x "$PLUGIN" "$@" >"$WORK/agent.log" 2>&1) &
  AGENT=$!
  waitFor 20 agentAnswers
}
agentAnswers() { [ -S "$SOCK" ] && cli get Device.LocalAgent.EndpointID | grep -q '=>'; }

# Stops the agent and the emulator by their process ids (the trap of a check calls it).
stopAgentAndEmulator() {
  local pid
  for pid in $AGENT $EMU; do kill "$pid" 2>/dev/null; done
  for pid in $AGENT $EMU; do wait "$pid" 2>/dev/null; done
}

# The controller: tools/controller/usp-controller.js on the usp-js library, installed with npm
# into $BUILD/usp-controller (once; about 25 s and 190 MB).
CONTROLLER=$ROOT/tools/controller/usp-controller.js
CONTROLLER_DIR=$BUILD/usp-controller
export NODE_PATH=$CONTROLLER_DIR/node_modules
installController() {
  local wanted
  wanted=$(sed -n 's/^ *"usp-js": "\(.*\)"$/\1/p' "$ROOT/tools/controller/package.json")
  [ "$(node -p "require('$NODE_PATH/usp-js/package.json').version" 2>/dev/null)" = "$wanted" ] && return 0
  echo "installing usp-js $wanted into $CONTROLLER_DIR (npm, log: $CONTROLLER_DIR/npm.log)"
  mkdir -p "$CONTROLLER_DIR" && cp "$ROOT/tools/controller/package.json" "$CONTROLLER_DIR/" &&
    (cd "$CONTROLLER_DIR" && timeout 600 npm install --no-audit --no-fund) >"$CONTROLLER_DIR/npm.log" 2>&1
}
# controller [OPTION VALUE]... COMMAND ARGS...: one message from the controller to the agent.
controller() { timeout 90 node "$CONTROLLER" --port "$BROKER_PORT" --agent "$AGENT_ID" "$@" 2>&1; }

# The broker: mosquitto on a free port of the loopback (inside the check's network namespace);
# sets BROKER and BROKER_PORT.  True once it accepts connections.
BROKER="" BROKER_PORT=""
startBroker() {
  BROKER_PORT=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
  printf 'listener %s 127.0.0.1\nallow_anonymous true\npersistence false\n' "$BROKER_PORT" >"$WORK/broker.conf"
  "$(PATH=$PATH:/usr/sbin command -v mosquitto)" -c "$WORK/broker.conf" >"$WORK/broker.log" 2>&1 &
  BROKER=$!
  waitFor 5 bash -c "exec 3<>/dev/tcp/127.0.0.1/$BROKER_PORT" 2>/dev/null
}

# The agent as a controller manages it: its first configuration from the factory-reset file
# (broker port and a client id of its own filled in), its endpoint id AGENT_ID; sets AGENT.
# True once its MQTT client is connected to the broker.
AGENT_ID=proto::tr104-agent
startManagedAgent() {
  sed -e "s/@BROKER_PORT@/$BROKER_PORT/" -e "s/@CLIENT_ID@/tr104-agent-$$/" "$ROOT/agents/usp/factory-reset-mqtt.txt" \
    >"$WORK/factory-reset.txt"
  USP_ENDPOINT_ID=$AGENT_ID startAgent -r "$WORK/factory-reset.txt" &&
    waitFor 10 bash -c "timeout 10 '$OBUSPA' -s '$SOCK' -c get Device.MQTT.Client.1.Status | grep -q '=> Connected$'"
}
