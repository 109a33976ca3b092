#!/bin/sh
# Checks what the rooms of src include against the table of CONTRIBUTING.md: tests/rooms.sh FOLDER_OF_THE_PROJECT
# A row of the table may include what its last column names, "all above" the rows before it.
cd "$1" || exit 1
find src -name '*.h' -o -name '*.cpp' -o -name '*.inc' | xargs grep -Hs '^#include ["<]' | awk '
  FILENAME == "CONTRIBUTING.md" {
    if (!/^\| `src\//) next
    split($0, cell, "|")
    room = cell[2]; gsub(/[ `]|src\//, "", room)
    may[room] = cell[4] ~ /all above/ ? above : cell[4]
    if (room ~ /^ui\//) fltk[room] = 1
    above = above " `" room "`"
    next
  }
  {
    file = $0; sub(/:.*/, "", file); sub(/^src\//, "", file)
    header = $0; sub(/^[^:]*:#include ./, "", header); sub(/[">].*/, "", header)
    from = RoomOf(file); to = header ~ /^FL\// ? "FL/" : RoomOf(header)
    if (from == "") { print file ": its room is not in the table"; bad = 1 }
    if (to == "" || to == from || (to == "FL/" ? from in fltk : index(may[from], "`" to "`"))) next
    print file " includes " header; bad = 1
  }
  function RoomOf(path,   room, best) {
    for (room in may) if (index(path, room) == 1 && length(room) > length(best)) best = room
    return best
  }
  END { exit bad || NR < 1000 }' CONTRIBUTING.md -
