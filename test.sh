#!/usr/bin/env bash
# Sets up, builds and runs all tests.
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)
cd "$root"
# Only one copy runs for a user, and tests start copies.
if grep -qE '/kestrun( \(deleted\))?$' < <(readlink /proc/[0-9]*/exe 2>/dev/null); then
  echo "Kestrun is running: close it first, the tests start copies of their own" >&2
  exit 2
fi
tools/setup.sh test
if [ -z "${KESTRUN_TEST_DATA:-}" ] && [ -d "$root/../shared/data" ]; then
  KESTRUN_TEST_DATA=$(cd "$root/../shared/data" && pwd)
  export KESTRUN_TEST_DATA
fi

step() { printf '\n== %s (%s s)\n' "$1" "$SECONDS"; }
build() {  # preset, further cmake arguments
  local preset=$1
  shift
  mkdir -p build
  if ! { cmake --preset "$preset" "$@" && cmake --build --preset "$preset"; } >"build/$preset.log" 2>&1; then
    grep -nE 'error|FAILED' "build/$preset.log" | head -n 40 >&2
    echo "The $preset build failed; the whole log is in build/$preset.log" >&2
    exit 1
  fi
}

step "Building: release"
build release
step "Building: address and undefined-behaviour sanitizers, fuzzing programs"
build asan -DKR_TEST_TAG=asan: -DKR_FUZZ=ON
step "Building: thread sanitizer"
build tsan -DKR_TEST_TAG=tsan:
step "Building: Windows"
build windows

step "Testing"
# One run over all builds, so that there is one summary.
mkdir -p build/all
printf 'subdirs("%s")\n' "$root"/build/{release,asan,tsan,windows} >build/all/CTestTestfile.cmake
status=0
ctest --test-dir build/all --output-on-failure -j 4 || status=$?
echo
awk -f tools/test_summary.awk build/all/Testing/Temporary/LastTest.log
exit "$status"
