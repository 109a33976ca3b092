#!/usr/bin/env bash
# Makes package/windows/kestrun.ico anew from the drawing; run it when the drawing has changed.
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
pictures=()
for size in 16 24 32 48 64 256; do
  rsvg-convert -w $size -h $size -o "$work/$size.png" src/ui/icons/kestrun.svg
  pictures+=("$work/$size.png")
done
convert "${pictures[@]}" package/windows/kestrun.ico
