# Sourced by the scripts that show the program on a display of their own and save pictures.

# Starts an X server on the first free number, with a window manager: a folder for what they say.
# Sets DISPLAY, `server` and `manager`.
start_display() {
  local folder=$1
  # The server writes the number when it is ready.
  exec 3>"$folder/display"
  Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp -noreset >"$folder/xvfb.log" 2>&1 &
  server=$!
  exec 3>&-
  for _ in $(seq 100); do
    [ -s "$folder/display" ] && break
    sleep 0.1
  done
  [ -s "$folder/display" ] || { echo "No display could be started; see $folder/xvfb.log" >&2; exit 1; }
  DISPLAY=:$(head -n 1 "$folder/display")
  export DISPLAY
  openbox >"$folder/openbox.log" 2>&1 &
  manager=$!
}

# Cuts a window with its frame out of a picture of the whole screen: screen's picture, window,
# picture to write, further options of `convert`.
cut_window() {
  local screen=$1 window=$2 picture=$3
  local left right top bottom x y width height
  shift 3
  read -r left right top bottom < <(xprop -id "$window" _NET_FRAME_EXTENTS | sed 's/.*= //; s/,//g')
  read -r x y width height < <(xwininfo -id "$window" | awk '
    /Absolute upper-left X/ { x = $NF } /Absolute upper-left Y/ { y = $NF }
    /^ *Width:/ { w = $NF } /^ *Height:/ { print x, y, w, $NF }')
  convert "$screen" \
    -crop "$((width + left + right))x$((height + top + bottom))+$((x - left))+$((y - top))" \
    +repage "$@" "$picture"
}
