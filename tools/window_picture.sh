# Sourced by the scripts that save pictures.

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
