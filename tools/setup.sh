#!/usr/bin/env bash
# Installs what is missing of tools/packages.txt: tools/setup.sh run|test
set -euo pipefail
purpose=${1:?say what for: run or test}
cd "$(dirname "$0")"

missing=()
while read -r group package _; do
  case "$group" in
    ''|'#'*) continue ;;
    run) ;;
    *) [ "$purpose" = "$group" ] || continue ;;
  esac
  dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -q '^installed$' || missing+=("$package")
done < packages.txt
[ ${#missing[@]} -gt 0 ] || exit 0

echo "Installing: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "Please install these packages as root, or install sudo." >&2; exit 1; }
  as_root=(sudo)
fi
log=$(mktemp)
if ! { "${as_root[@]}" apt-get update &&
       "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
  tail -n 20 "$log" >&2
  echo "The packages could not be installed; the whole log is in $log" >&2
  exit 1
fi
rm -f "$log"
