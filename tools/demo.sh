#!/usr/bin/env bash
# Runs the demo jobs in the real window: tools/demo.sh FOLDER_OF_THE_PROGRAMS
# The program is killed once while a job runs, and the next start goes on with the queue and takes
# the solver over. With a display the window stays open. Without one it runs under Xvfb, prints a line a job and
# saves a screenshot; exit code 0 only when every job has ended as its deck says.
set -euo pipefail
bin=$(realpath "${1:?the folder of the built programs}")
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/display.sh"
title="Kestrun 2016 R1"
time_limit=180  # seconds for all jobs

scratch=$(mktemp -d "${TMPDIR:-/tmp}/kr-demo.XXXXXX")
jobs=$scratch/jobs
work="$scratch/config/orla/$title"
mkdir -p "$jobs" "$work" "$scratch/tmp" "$scratch/solvers"
# A folder a deck, so that no run overwrites another's results.
decks=()
for deck in "$root"/demo/decks/*.{k,fin,dat}; do
  file=$(basename "$deck")
  mkdir "$jobs/${file%.*}"
  cp "$deck" "$jobs/${file%.*}/"
  decks+=("$jobs/${file%.*}/$file")
done
# One with stages brings its folder along.
for folder in "$root"/demo/decks/*/; do
  name=$(basename "$folder")
  cp -r "$folder" "$jobs/$name"
  decks+=("$jobs/$name/$name.k")
done
# The stand-in plays the solver that its name says.
for name in KVIN_SC.EXE Vorel.exe UtilityBatch.exe; do
  ln -s "$bin/standin_solver" "$scratch/solvers/$name"
done
cat >"$work/kr_init.config" <<CONFIG
[GENERAL]
memory_size=500
memory_auto=1
pause_time=1
cpu_count=1
last_path=$jobs
[SOLVER]
ls_dyna_s=$bin/standin_solver
ls_dyna_d=$bin/standin_solver_d
u_batch=$scratch/solvers/UtilityBatch.exe
v_orel=$scratch/solvers/Vorel.exe
inc=$scratch/solvers/KVIN_SC.EXE
inc_token=demo.0123456789abcdefg
[MPP]
memory2=200
CONFIG
export XDG_CONFIG_HOME=$scratch/config TMPDIR=$scratch/tmp
export KESTRUN_HANDOVER_FOLDER=$scratch/handover
echo "Work folder: $scratch"

# Leaves the second program in `window`; its options are the arguments.
run_and_kill() {
  local first=$jobs/frame/messag  # of the second job, while it runs
  "$bin/kestrun" --submit "${decks[@]}" &
  window=$!
  for _ in $(seq 600); do
    [ -e "$first" ] && break
    kill -0 "$window" 2>/dev/null || break
    sleep 0.1
  done
  if [ ! -e "$first" ]; then
    echo "Kestrun ended early, or runs no jobs: another copy of yours may be running. Its log: $work/kr.log" >&2
    return 1
  fi
  kill -9 "$window"
  wait "$window" 2>/dev/null || true
  echo "Killed Kestrun while $(basename "${first%/*}").k ran; the next start goes on"
  "$bin/kestrun" --restore --submit "$@" &
  window=$!
}

if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
  run_and_kill
  wait "$window"
  exit
fi

cleanup() {
  [ -z "${window:-}" ] || { kill "$window" && wait "$window"; } 2>/dev/null || true
  kill ${manager:-} ${server:-} 2>/dev/null || true
  wait 2>/dev/null || true
}
trap cleanup EXIT
start_display "$scratch"

report=$scratch/report.txt
run_and_kill "--report=$report"
picture_taken=
for _ in $(seq $((time_limit * 5))); do
  [ -s "$report" ] && break
  # In the middle of a run, so that the picture has a bar.
  if [ -z "$picture_taken" ] && [ -s "$jobs/plate/messag" ]; then
    sleep 2.5
    import -window root "$scratch/root.png"
    picture_taken=1
  fi
  kill -0 "$window" 2>/dev/null || { echo "Kestrun ended early: another copy of yours may be running. Its log: $work/kr.log" >&2; exit 1; }
  sleep 0.2
done
if [ ! -s "$report" ]; then
  echo "The jobs did not end within $time_limit seconds; the log: $work/kr.log" >&2
  exit 1
fi
sleep 1
screenshot=${KR_SCREENSHOT:-$scratch/kestrun.png}
[ -n "$picture_taken" ] || import -window root "$scratch/root.png"
id=$(xdotool search --name "^$title\$" | head -n 1)
cut_window "$scratch/root.png" "$id" "$screenshot"
rm -f "$scratch/root.png"
# What a job's own output tells, in one line: the model's size, the messages and what the first error
# says, or the total time.
findings() {  # job file, solver
  local folder=${1%/*}
  case $2 in
    INCSolver) "$bin/krinspect" inc "$1" | sed 1d ;;
    VOREL) "$bin/krinspect" vorel "$1" | sed 1d ;;
    *)
      {
        "$bin/krinspect" d3plot "$folder/d3plot" 2>/dev/null |
          awk -F ': ' '$1 == "nodes" || $1 == "elements" { print $2, $1 }'
        "$bin/krinspect" message "$folder/messag.krb" |
          sed -n -e 's/^Found \([0-9]\)/\1/p' -e '/^List Errors/ { n; n; p }'
      } | awk '{ printf "%s%s", between, $0; between = ", " }'
      ;;
  esac | tr -s '\n ' ' ' | sed 's/ $//'
}
# A deck that asks the stand-in to fail is to end as Aborted.
expected() {  # job file
  if grep -rqiE '^\$ *standin: *(fail|errors|crash)' --include='*.'{k,fin,dat} "${1%/*}"; then
    echo Aborted
  else
    echo Finished
  fi
}
as_told=0
while IFS=$'\t' read -r deck status solver _; do
  note=
  if [ "$status" = "$(expected "$deck")" ]; then
    as_told=$((as_told + 1))
    [ "$status" = Finished ] || note=' as its deck asks'
  else
    note=", but its deck asks for $(expected "$deck")"
  fi
  printf '%s  %s  %s%s: %s\n' "${deck#"$jobs/"}" "$solver" "$status" "$note" "$(findings "$deck" "$solver")"
done <"$report"
echo "Screenshot: $screenshot"
[ "$as_told" = "${#decks[@]}" ]
