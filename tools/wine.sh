#!/usr/bin/env bash
# Runs Windows programs of a build folder under Wine, with nothing of the user's own Wine.
#   tools/wine.sh start FOLDER               makes FOLDER/prefix afresh and starts its server
#   tools/wine.sh run FOLDER PROGRAM ARGS... runs the program there; starts first where needed
#   tools/wine.sh stop FOLDER                ends all of it
# What is forgotten ends by itself: the display and what keeps the desktop after an hour, the server
# ten minutes later.
set -euo pipefail
# With addresses at random, one start of a program in some thousands fails, since something lies
# where Wine must have its memory.
if [ -z "${KR_ADDRESSES_FIXED:-}" ] && setarch -R true 2>/dev/null; then
  KR_ADDRESSES_FIXED=1 exec setarch -R "$0" "$@"
fi
action=${1:?start, run or stop}
folder=${2:?the folder of the prefix}
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)

export WINEPREFIX=$folder/prefix
export HOME=$folder/home  # Wine links its folders of the user to those in there
mkdir -p "$HOME"
export WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe=;winedbg.exe='  # no downloads, no debugger
wine=/usr/lib/wine/wine64  # Debian's wrapper asks for the 32-bit half
server=/usr/lib/wine/wineserver64
if [ ! -x "$wine" ]; then
  wine=$(command -v wine64 || command -v wine)
  server=$(command -v wineserver)
fi
export WINELOADER=$wine WINESERVER=$server
state=$folder/display

stop() {
  if [ -d "$WINEPREFIX" ]; then "$server" -k >/dev/null 2>&1 || true; fi
  if [ -s "$folder/display.pid" ]; then
    kill "$(cat "$folder/display.pid")" 2>/dev/null || true
  fi
  rm -f "$state" "$folder/display.pid"
}

# A display of its own: what a program shows is no business of the user's screen.
start_display() {
  setsid timeout 3600 Xvfb -displayfd 3 -nolisten tcp -noreset -screen 0 1024x768x24 \
    3>"$state" >/dev/null 2>&1 </dev/null &
  echo $! >"$folder/display.pid"
  for _ in $(seq 100); do
    [ ! -s "$state" ] || break
    sleep 0.1
  done
  [ -s "$state" ] || { echo "No virtual display could be started" >&2; exit 1; }
  export DISPLAY=:$(cat "$state")
}

# Wine closes its desktop when the last program ends, and needs seconds for the next one's: too long
# for a program that has two to answer. So one stays, at an input where nothing ever comes.
keep_desktop() {
  rm -f "$folder/nothing"
  mkfifo "$folder/nothing"
  setsid timeout 3600 "$wine" 'C:\windows\system32\cmd.exe' <>"$folder/nothing" >/dev/null 2>&1 &
}

start() {
  stop
  rm -rf "$WINEPREFIX"
  start_display
  mkdir -p "$WINEPREFIX"
  "$server" -p600 >/dev/null 2>&1 </dev/null
  "$wine" wineboot --init >"$folder/start.log" 2>&1 </dev/null
  "$wine" winecfg -v win10 >>"$folder/start.log" 2>&1 </dev/null
  keep_desktop
}

case "$action" in
  start) start ;;
  stop) stop ;;
  run)
    [ -s "$state" ] || start
    export DISPLAY=:$(cat "$state")
    if [ -n "${KESTRUN_TEST_DATA:-}" ]; then export KESTRUN_TEST_DATA="Z:$KESTRUN_TEST_DATA"; fi
    exec "$wine" "${@:3}"
    ;;
  *) echo "start, run or stop" >&2; exit 2 ;;
esac
