#!/usr/bin/env bash
# Installs the Debian package into a clean root and uses the program from there:
#   debian_package.sh <build folder>
# The root is the machine's system with nothing of the project in it. What is written to it, its
# processes, its display and its network end with the test. Ends with 77 where that cannot be had.
set -euo pipefail

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

pack() {  # build folder, folder for the package
  (cd "$1" && cpack -G DEB -B "$2") >"$2/cpack.log" 2>&1 || { cat "$2/cpack.log"; fail "cpack"; }
  mv "$2"/kestrun_*.deb "$2/kestrun.deb"
  rm -rf "$2/_CPack_Packages"
}

make_root() {  # folder with the package; leaves the root in its folder "root"
  mount -t tmpfs tmpfs "$1/system" || return
  mkdir "$1"/system/{upper,work,root}
  mount -t overlay overlay \
    -o "lowerdir=/,upperdir=$1/system/upper,workdir=$1/system/work" "$1/system/root" || return
  local root=$1/system/root
  for folder in tmp root run home; do mount -t tmpfs tmpfs "$root/$folder" || return; done
  chmod 1777 "$root/tmp"
  mount -t proc proc "$root/proc" && mount --rbind /dev "$root/dev" &&
    mount -t tmpfs tmpfs "$root/dev/shm" && chmod 1777 "$root/dev/shm" || return
  cp "$1/kestrun.deb" "$0" "$root/tmp"
}

wait_for() {  # seconds, command...
  local end=$((SECONDS + $1))
  shift
  until "$@" >/dev/null 2>&1; do
    [ $SECONDS -lt $end ] || return 1
    sleep 0.1
  done
}

window() { xdotool search --onlyvisible --class "^$1\$"; }
copies() { find /proc -maxdepth 2 -path '/proc/[0-9]*/exe' -lname '*/kestrun' 2>/dev/null | wc -l; }
as_user() {
  setpriv --reuid 1000 --regid 1000 --clear-groups env -i HOME=/home/user PATH=/usr/bin:/bin \
    LANG=C.UTF-8 DISPLAY="$DISPLAY" "$@"
}

in_root() {
  export PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root
  cd /
  if dpkg-query -W kestrun >/dev/null 2>&1; then dpkg --purge kestrun; fi
  # Checks what the package depends on too.
  DEBIAN_FRONTEND=noninteractive dpkg --no-triggers --force-unsafe-io -i /tmp/kestrun.deb
  for file in /usr/lib/kestrun/{krconsole,English/Kestrun.chm,Chinese/Kestrun.chm} \
    /usr/share/applications/kestrun.desktop /usr/share/icons/hicolor/{16x16,48x48}/apps/kestrun.png \
    /usr/share/icons/hicolor/scalable/apps/kestrun.svg /usr/share/man/man1/{kestrun,krinspect}.1.gz \
    /usr/share/doc/kestrun/copyright; do
    [ -s "$file" ] || fail "the package has no $file"
  done

  Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp -noreset -ac 3>/tmp/display 2>/tmp/xvfb.log &
  wait_for 20 test -s /tmp/display || fail "no display: $(cat /tmp/xvfb.log)"
  DISPLAY=:$(cat /tmp/display)
  export DISPLAY
  openbox >/tmp/openbox.log 2>&1 &
  wait_for 10 eval 'xprop -root _NET_SUPPORTING_WM_CHECK | grep "window id"' || fail "no openbox"

  install -d -o 1000 -g 1000 /home/user
  printf '*KEYWORD\n*CONTROL_TERMINATION\n1.0\n*END\n' >/home/user/deck.k
  [ -n "$(as_user krinspect deck /home/user/deck.k)" ] || fail "krinspect finds nothing in a deck"

  # What the menu entry runs.
  local started
  started=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' /usr/share/applications/kestrun.desktop)
  as_user "$started" >/tmp/kestrun.log 2>&1 &
  local program=$!
  wait_for 15 window Kestrun || fail "no window: $(cat /tmp/kestrun.log)"
  echo "The window: $(xdotool getwindowname "$(window Kestrun)")"

  # A second copy hands its deck over and ends.
  as_user timeout 15 kestrun /home/user/deck.k || fail "the second copy ended with $?"
  [ "$(copies)" = 1 ] || fail "$(copies) copies run"

  xdotool windowactivate --sync "$(window Kestrun)" key F1
  wait_for 10 window KestrunHelp || fail "F1 opens no help window"
  local help="Help - Kestrun"
  wait_for 5 eval '[ "$(xdotool getwindowname "$(window KestrunHelp)")" = "$help" ]' ||
    fail "the help shows \"$(xdotool getwindowname "$(window KestrunHelp)")\""
  echo "The help: $help"
  xdotool key Escape
  wait_for 5 eval '! window KestrunHelp' || fail "the help stays open"
  xdotool windowactivate --sync "$(window Kestrun)" key ctrl+q
  wait_for 10 eval '! kill -0 $program' || fail "the program does not end"
  wait $program || fail "the program ended with $?: $(cat /tmp/kestrun.log)"

  dpkg --no-triggers --force-unsafe-io --purge kestrun
  [ ! -e /usr/lib/kestrun ] && [ ! -L /usr/bin/kestrun ] || fail "removing leaves files"
}

case "$1" in
  --in-root) in_root ;;
  --apart)
    make_root "$2" >"$2/mounts.log" 2>&1 ||
      { echo "SKIPPED: no root of its own: $(cat "$2/mounts.log")"; exit 77; }
    chroot "$2/system/root" bash /tmp/debian_package.sh --in-root
    ;;
  *)
    [ "$(id -u)" = 0 ] || { echo "SKIPPED: only root can install a package"; exit 77; }
    folder=$(mktemp -d)
    mkdir "$folder/system"
    trap 'rm -rf --one-file-system "$folder"' EXIT
    unshare --mount --pid --fork --net --ipc true 2>"$folder/log" ||
      { echo "SKIPPED: no namespaces of its own: $(cat "$folder/log")"; exit 77; }
    pack "$1" "$folder"
    unshare --mount --pid --fork --net --ipc --kill-child bash "$0" --apart "$folder"
    ;;
esac
