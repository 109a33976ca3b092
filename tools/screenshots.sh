#!/usr/bin/env bash
# Takes the pictures of docs/: tools/screenshots.sh FOLDER_OF_THE_PROGRAMS [FOLDER_OF_THE_PICTURES]
# Starts the real program on a display of its own, once a language, with a demo queue, opens every
# window and saves each as NAME.png (English) and NAME-zh.png (Chinese). No other copy of the
# program may run meanwhile. To add a picture, add a step to `pictures`.
set -euo pipefail
bin=$(realpath "${1:?the folder of the built programs}")
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/display.sh"
out=$(realpath -m "${2:-$root/docs}")
title="Kestrun 2016 R1"
scratch=$(mktemp -d "${TMPDIR:-/tmp}/kestrun.XXX")
mkdir -p "$out"
language= suffix= jobs= main= program= sick= began=
long_run=240  # seconds of the job that goes on while the pictures are taken

cleanup() {
  kill ${program:-} ${sick:-} ${manager:-} ${server:-} 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$scratch"
}
trap cleanup EXIT

start_display "$scratch"

# Where things are in the main window, from the program's own header.
c++ -std=c++20 -I "$root/src" -x c++ - -o "$scratch/places" <<'CODE'
#include <cstdio>
#include "ui/window/Layout.h"
using namespace Layout;
int main() {
  const int w = kWindowWidth, tool = kToolSize / 2;
  const auto row = [&](int number) {
    return TableY(w) + 1 + kHeaderHeight + number * kRowHeight + kRowHeight / 2;
  };
  std::printf("tool_y=%d restart_x=%d config_x=%d about_x=%d submit_x=%d\n", kToolY + tool,
              ToolX(Action::kAddRestart, w) + tool, ToolX(Action::kConfig, w) + tool,
              ToolX(Action::kAbout, w) + tool, ToolX(Action::kSubmit, w) + tool);
  std::printf("mpp_x=%d mpp_y=%d tab_y=%d\n", w - kMargin - 60, ParameterRowY(w) + kFieldHeight / 2,
              TabsY(w) + kTabHeight / 2);
  std::printf("row_1=%d row_2=%d row_3=%d row_4=%d row_5=%d\n", row(0), row(1), row(2), row(3),
              row(4));
}
CODE
eval "$("$scratch/places")"

# The id of the last window of a class; waits for it.
window_of() {
  local id=
  for _ in $(seq 50); do
    id=$(xdotool search --onlyvisible --class "^$1\$" 2>/dev/null | tail -n 1)
    [ -n "$id" ] && break
    sleep 0.1
  done
  [ -n "$id" ] || { echo "No window of the class $1 came" >&2; return 1; }
  echo "$id"
}
key() { xdotool key --delay 60 "$@"; sleep 0.4; }
# A button, and a place in the main window.
click() { xdotool mousemove --window "$main" "$2" "$3" sleep 0.1 click "$1"; sleep 0.5; }
row() { click 1 60 "$1"; }

# Saves a window with its frame: picture's name, window.
shoot() {
  sleep 0.6
  import -window root "$scratch/root.png"
  cut_window "$scratch/root.png" "$2" "$out/$1$suffix.png" -strip -colors 256
  echo "$out/$1$suffix.png"
}
# A dialog's picture, then Escape: picture's name, window class.
shoot_dialog() {
  shoot "$1" "$(window_of "$2")"
  key Escape
}

# A picture with the tip of a job's status: picture's name, place of the row.
shoot_tip() {
  xdotool mousemove --window "$main" 600 "$2" sleep 0.3 mousemove_relative 2 1
  sleep 2
  shoot "$1" "$main"
}

# Copies a demo deck: where to, which, how many seconds it runs.
deck() {
  mkdir -p "$(dirname "$jobs/$1")"
  sed "s/standin: run .*/standin: run $3/" "$root/demo/decks/$2" >"$jobs/$1"
  decks+=("$jobs/$1")
}

start_program() {
  local work="$scratch/config$suffix/orla/$title" solvers=$scratch/solvers
  mkdir -p "$work" "$scratch/tmp" "$solvers"
  for name in KVIN_SC.EXE Vorel.exe UtilityBatch.exe; do
    ln -sf "$bin/standin_solver" "$solvers/$name"
  done
  ln -sf "$bin/standin_solver" "$solvers/ls-dyna_s"
  ln -sf "$bin/standin_solver_d" "$solvers/ls-dyna_d"
  printf '%s\n' '[GENERAL]' "language=$language" memory_size=500 memory_auto=1 pause_time=0 \
    cpu_count=4 "last_path=$jobs" xterm_path=none '[SOLVER]' "ls_dyna_s=$solvers/ls-dyna_s" \
    "ls_dyna_d=$solvers/ls-dyna_d" "u_batch=$solvers/UtilityBatch.exe" \
    "v_orel=$solvers/Vorel.exe" "inc=$solvers/KVIN_SC.EXE" inc_token=demo.0123456789abcdefg \
    '[MPP]' use_mpp=0 memory2=200 >"$work/kr_init.config"
  printf '%s\n' "node1 16" "node2 16" >"$work/kr_host.txt"
  export XDG_CONFIG_HOME=$scratch/config$suffix TMPDIR=$scratch/tmp
  export KESTRUN_HANDOVER_FOLDER=$scratch/handover$suffix
  "$bin/kestrun" &
  program=$!
  main=$(window_of Kestrun)
  xdotool windowactivate --sync "$main" windowmove --sync "$main" 120 120
  sleep 0.5
}

# Puts jobs of every state into the queue.
fill_queue() {
  decks=()
  deck "$1/$1.k" plate.k 1
  deck "$2/$2.k" block.k 1
  cp -r "$root/demo/decks/forming" "$jobs/forming"
  sed -i 's/standin: run .*/standin: run 0.3/' "$jobs/forming"/*.k
  decks+=("$jobs/forming/forming.k")
  # Healthy at first, and sick in its second half.
  deck "$3/$3.k" plate.k "$long_run"
  sed -i '1a $ standin: falling-step 0.005\n$ standin: hourglass 80' "$jobs/$3/$3.k"
  deck pan/pan.fin pan.fin 3
  deck bracket/bracket.dat bracket.dat 2
  "$bin/kestrun" "${decks[@]}"
  sleep 1
  key ctrl+Return
  for _ in $(seq 400); do
    [ -e "$jobs/$3/messag" ] && break
    sleep 0.1
  done
  began=$SECONDS
  sleep 1.5
}

# A program that dies while a job runs, and the next one, which offers what it left.
shoot_left_bar() {
  kill -9 "$program"
  wait "$program" 2>/dev/null || true
  "$bin/kestrun" &
  program=$!
  sleep 1  # the old window is gone
  main=$(window_of Kestrun)
  shoot left-bar "$main"
  kill -9 "$program"
  wait "$program" 2>/dev/null || true
  "$bin/kestrun" --restore &  # the solver that runs is to be stopped
  program=$!
  sleep 1
  main=$(window_of Kestrun)
  xdotool windowactivate --sync "$main"
}

# A run beside the queue that is as sick as the stand-in can be.
run_sick() {
  decks=()
  deck sick/sick.k plate.k 40
  for sickness in 'lines 400' 'falling-step 0.005' 'energy-ratio 1.5' 'hourglass 20' 'added-mass 7'; do
    sed -i "1a \$ standin: $sickness" "$jobs/sick/sick.k"
  done
  (cd "$jobs/sick" && exec "$scratch/solvers/ls-dyna_s" i=sick.k >sick.console 2>&1) &
  sick=$!
}

# The monitor of the job that runs, and of the sick run.
shoot_monitors() {
  row "$row_4"
  key F6
  shoot monitor "$(window_of KestrunMonitor)"
  key Escape
  xdotool windowactivate --sync "$main"
  key shift+F6
  window_of KestrunChooser >/dev/null
  key ctrl+a
  xdotool type --delay 60 "$jobs/sick"
  sleep 0.3
  key Return Return  # into the folder, then take it
  wait "$sick" || true
  sick=
  sleep 1.5
  shoot monitor-sick "$(window_of KestrunMonitor)"
  key Escape
  xdotool windowactivate --sync "$main"
}

# Group's name, then those of three jobs.
pictures() {
  jobs=$scratch/jobs$suffix
  mkdir -p "$jobs"
  start_program
  run_sick
  shoot main-window-empty "$main"
  fill_queue "$2" "$3" "$4"
  key F2
  key ctrl+a
  xdotool type --delay 60 "$1"
  sleep 0.3
  shoot rename-group "$(window_of KestrunDialog)"
  key Return
  key ctrl+t
  key ctrl+Tab
  row "$row_1"
  key ctrl+i
  shoot_dialog job-information KestrunDialog
  row "$row_2"
  key ctrl+i
  shoot_dialog job-information-aborted KestrunDialog
  row "$row_1"
  key ctrl+k
  sleep 0.5  # the job's files are looked at
  shoot_dialog command-line KestrunDialog
  row "$row_3"
  key ctrl+e
  shoot_dialog multiple-stages KestrunDialog
  click 1 "$mpp_x" "$mpp_y"
  shoot_dialog mpp-settings KestrunDialog
  click 1 "$config_x" "$tool_y"
  shoot_dialog configuration KestrunDialog
  key ctrl+comma
  shoot_dialog queue-options KestrunDialog
  click 1 "$restart_x" "$tool_y"
  shoot_dialog restart-job KestrunDialog
  click 1 "$about_x" "$tool_y"
  shoot_dialog about KestrunDialog
  key ctrl+o
  shoot_dialog choose-file KestrunChooser
  key ctrl+shift+o
  shoot_dialog choose-folder KestrunChooser
  row "$row_5"
  key ctrl+m
  shoot_dialog message KestrunMessage
  key Delete
  shoot_dialog question KestrunMessage
  row "$row_4"
  key ctrl+m
  shoot text "$(window_of KestrunText)"
  xdotool windowactivate --sync "$main"
  key ctrl+h
  sleep 1  # the history is read
  shoot_dialog history KestrunHistory
  xdotool windowactivate --sync "$main"
  key F1
  shoot help "$(window_of KestrunHelp)"
  xdotool windowactivate --sync "$main"
  row "$row_1"
  shoot main-window "$main"
  xdotool windowsize --sync "$main" 720 420
  shoot main-window-narrow "$main"
  xdotool windowmove --sync "$main" 120 24 windowsize --sync "$main" 1000 740  # the menus fit into it
  sleep 0.4
  xdotool mousemove --window "$main" "$submit_x" "$tool_y"
  sleep 1
  shoot tooltip "$main"
  click 3 60 "$row_2"
  shoot job-menu "$main"
  key Escape
  click 3 40 "$tab_y"
  shoot group-menu "$main"
  key Escape
  shoot_monitors
  [ $((SECONDS - began)) -ge $((long_run / 2)) ] || shoot_tip run-tip "$row_4"
  until [ $((SECONDS - began)) -ge $((long_run * 6 / 10)) ]; do sleep 1; done
  [ $((SECONDS - began)) -ge $((long_run - 5)) ] || shoot_tip run-tip-sick "$row_4"
  shoot_left_bar
  key ctrl+q
  shoot exit-question "$(window_of KestrunMessage)"
  key Tab  # "No" comes first while a job runs
  key Return
  for _ in $(seq 350); do
    kill -0 "$program" 2>/dev/null || break
    sleep 0.1
  done
  program=
}

language=0 suffix=
pictures "Door panels" door_inner fender "车身侧围"
language=1 suffix=-zh
pictures 门板 门板内板 翼子板 车身侧围
