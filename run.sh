#!/usr/bin/env bash
# Sets up, builds and starts Kestrun with the arguments given.
#   ./run.sh [deck.k ...]   the program
#   ./run.sh --demo         six demo jobs in a scratch work folder, run by the stand-in solver
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)
"$root/tools/setup.sh" run

build=$root/build/run
mkdir -p "$root/build"
if ! { cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKR_TESTS=OFF &&
       cmake --build "$build"; } >"$build.log" 2>&1; then
  tail -n 40 "$build.log" >&2
  echo "The build failed; the whole log is in $build.log" >&2
  exit 1
fi

if [ "${1:-}" = --demo ]; then
  exec "$root/tools/demo.sh" "$build/bin"
fi
exec "$build/bin/kestrun" "$@"
