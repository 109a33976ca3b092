#!/usr/bin/env bash
# Compares what both systems answer: compare.sh <Linux program> <table to write> <Windows program>
# The table goes to the output too. Ends with 1 when an answer differs that is not expected to, with
# 77 when there is no Linux program.
set -euo pipefail
linux=$1
table=$2
here=$(cd "$(dirname "$0")" && pwd)
[ -x "$linux" ] || { echo "There is no program for Linux: $linux"; exit 77; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$linux" >"$folder/linux"
"$here/../../tools/wine.sh" run "${@:3}" | tr -d '\r' >"$folder/windows"

# Fields are three, split at " | "; the answer may hold more of these.
awk -v table="$table" '
function key(line,   first, second) {
  first = index(line, " | ")
  second = index(substr(line, first + 3), " | ")
  answer = substr(line, first + second + 5)
  return substr(line, 1, first + second + 1)
}
FILENAME ~ /expected/ { if (!/^#/) { k = key($0); reason[k] = answer }; next }
FILENAME ~ /windows$/ { k = key($0); windows[k] = answer; ++told; next }
{
  k = key($0)
  linux[k] = answer
  if (!(k in windows)) { verdict = "MISSING on Windows"; ++bad }
  else if (windows[k] == answer) { verdict = "same"; ++same }
  else if (k in reason) { verdict = "expected: " reason[k]; ++expected; used[k] }
  else { verdict = "DIFFERENT"; ++bad }
  printf "%s\n    Windows: %s\n    Linux:   %s\n    %s\n", k, windows[k], answer, verdict >table
}
END {
  for (k in windows) if (!(k in linux)) { print "MISSING on Linux: " k >table; ++bad }
  for (k in reason) if (!(k in used)) { print "No longer different: " k >table; ++bad }
  close(table)
  while ((getline line <table) > 0) print line
  printf "Compared: %d answers, %d the same, %d expected differences, %d other differences\n",
         told, same, expected, bad
  exit bad > 0 || told == 0
}' "$here/expected_differences.txt" "$folder/windows" "$folder/linux"
