#!/usr/bin/env bash
# Builds and runs the fuzzing programs. Arguments: seconds for each (10), names (all).
# FUZZ_RUNS stops a program after so many executions. Ends at the first finding, which it keeps.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
seconds=${1:-10}
names=("${@:2}")
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
bin=$root/build/fuzz/bin
if [ ${#names[@]} -eq 0 ]; then
  for program in "$bin"/fuzz_*; do names+=("${program##*/fuzz_}"); done
fi
for name in "${names[@]}"; do
  found=$root/build/fuzz/found/$name
  mkdir -p "$found"
  dictionary=()
  if [ -f "fuzz/$name.dict" ]; then dictionary=("-dict=fuzz/$name.dict"); fi
  echo "== $name"
  "$bin/fuzz_$name" -max_total_time="$seconds" -runs="${FUZZ_RUNS:--1}" -max_len=8192 \
    -rss_limit_mb=1024 -timeout=10 -print_final_stats=1 -verbosity=1 \
    -artifact_prefix="$found/finding-" "${dictionary[@]}" "$found" "fuzz/seeds/$name" 2>&1 |
    grep -E "^Done|executed_units|slowest|ERROR:|SUMMARY|finding-"
done
