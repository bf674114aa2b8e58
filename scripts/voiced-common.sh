# Shared by scripts/voiced-check.sh and scripts/demo-real.sh (sourced, inside a private network
# and IPC namespace): the registrar (Kamailio, accounts 1001/secret1 and 1002/secret2 on
# 127.0.0.1:$SIP_PORT), tr104-voiced, and the library driven through tr104ctl.
# Needs BUILD, ROOT and WORK; sets KAM and VOICE to the process ids it starts.
VOICED=$BUILD/tools/voiced/tr104-voiced
CTL=$BUILD/tools/tr104ctl
SIP_PORT=5060  # the registrar
UA_PORT=5080   # tr104-voiced's user agent
P=InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1
KAM="" VOICE=""
. "$ROOT/scripts/check-common.sh"

# tr104ctl refuses to start while the request queue is full, as it is for a moment when clients
# run in parallel: it sent nothing then, and is started again (at most 50 times, 0.1 s apart).
ctl() {
  local out rc
  for _ in $(seq 50); do
    out=$(timeout 60 "$CTL" --no-emulate "$@" 2>&1)
    rc=$?
    grep -q "request queue is full" <<<"$out" || break
    sleep 0.1
  done
  [ -z "$out" ] || printf '%s\n' "$out"
  return $rc
}
# The addresses of record in the registrar's location table, sorted, each followed by a blank.
registered() { kamcmd -s "unix:$WORK/run/kamailio_ctl" ul.dump 2>/dev/null | sed -n 's/^[[:space:]]*AoR: //p' | sort | tr '\n' ' '; }
registeredAre() { [ "$(registered)" = "$1" ]; }
statusIs() { [ "$(ctl get Tr104LineRegStatus --line "$1")" = "$2" ]; }
# Both lines registered: in the registrar's table, and Up as the library reads them.
bothRegistered() { registeredAre "1001 1002 " && statusIs 1 Up && statusIs 2 Up; }

# Starts the registrar (as the kamailio user when there is one); true once its control socket is up.
startRegistrar() {
  local modules user=()
  mkdir -p "$WORK/run"
  modules=$(dirname "$(dpkg -L kamailio 2>/dev/null | grep '/modules/tm.so$' | head -1)")
  sed -e "s|@PORT@|$SIP_PORT|" -e "s|@RUNDIR@|$WORK/run|" -e "s|@MODULES@|$modules|" \
    "$ROOT/tests/voiced/kamailio.cfg" >"$WORK/kamailio.cfg"
  if id kamailio >/dev/null 2>&1; then
    chown kamailio "$WORK/run"
    user=(-u kamailio -g kamailio)
  fi
  kamailio -DD -E -f "$WORK/kamailio.cfg" -Y "$WORK/run" -m 32 -M 4 "${user[@]}" >"$WORK/kamailio.log" 2>&1 &
  KAM=$!
  waitFor 10 test -S "$WORK/run/kamailio_ctl" && kill -0 "$KAM" 2>/dev/null
}

# Starts tr104-voiced (its private folder under $WORK/tmp, its console on $WORK/voiced.sock,
# more options in $VOICED_OPTIONS, e.g. --verbose); true once it serves the channel.
startVoiced() {
  mkdir -p "$WORK/tmp"
  TMPDIR=$WORK/tmp "$VOICED" --sip-port "$UA_PORT" --auto-answer 2 --ready-file "$WORK/voiced.ready" \
    --control "$WORK/voiced.sock" ${VOICED_OPTIONS:-} </dev/null >"$WORK/voiced.log" 2>&1 &
  VOICE=$!
  waitFor 15 test -f "$WORK/voiced.ready"
}

# Writes the registrar and both lines (numbers 1001 and 1002 with their credentials, enabled)
# by path, in one client call as a controller's single message: the groups the library stages
# (the server and its port, each line's user name and password) are written at the end of the
# call, not 5 s later.
configureLines() {
  ctl set $P.Line.1.DirectoryNumber 1001 $P.Line.2.DirectoryNumber 1002 \
    $P.Line.1.Enable Enabled $P.Line.2.Enable Enabled \
    $P.SIP.RegistrarServer 127.0.0.1 $P.SIP.RegistrarServerPort $SIP_PORT \
    $P.Line.1.SIP.AuthUserName 1001 $P.Line.1.SIP.AuthPassword secret1 \
    $P.Line.2.SIP.AuthUserName 1002 $P.Line.2.SIP.AuthPassword secret2 >"$WORK/set-lines.log"
}
